function testSpectrum()
% TESTSPECTRUM  Tones are found where they are, and power is kept.

rate = 1000;
x = sin(2 * pi * 125 * (0:4095)' / rate);

[s, f, t] = shortTimeSpectrum(x, rate, hannWindow(256), 128);
[~, peak] = max(abs(s));
assert(all(f(peak) == 125));
assert(numel(t) == 31);

[p, f] = powerDensity(x, rate, 256);
assert(abs(sum(p) * (f(2) - f(1)) - mean(x .^ 2)) < 1e-3);

d = toDecibel([0 1 10]);
assert(isequal(d, [-80 -20 0]));
end
