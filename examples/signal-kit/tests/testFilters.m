function testFilters()
% TESTFILTERS  A low-pass keeps low tones and takes high ones away.

rate = 1000;
t = (0:1999)' / rate;
low = sin(2 * pi * 20 * t);
high = sin(2 * pi * 300 * t);
h = lowpassKernel(rate, 100, 101);

y = applyKernel(h, low + high);

inner = 200:1800;
assert(max(abs(y(inner) - low(inner))) < 0.01);
assert(max(abs(movingMean(3 * ones(50, 1), 7) - 3)) < 1e-12);
end
