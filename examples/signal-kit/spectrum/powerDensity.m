function [p, f] = powerDensity(x, rate, n)
% POWERDENSITY  Power of a signal by frequency, averaged over its length.
%
%   [p, f] = powerDensity(x, rate, n) averages the spectra of pieces of N
%   samples that overlap by half. P is in power per hertz at the frequencies F;
%   its sum times the distance of two frequencies is the mean square of X.
%
%   See also shortTimeSpectrum, toDecibel.

if numel(x) < n
    error('SignalKit:tooShort', 'a signal of %d samples has no piece of %d', numel(x), n);
end

w = hannWindow(n);
[s, f] = shortTimeSpectrum(x, rate, w, max(floor(n / 2), 1));
p = mean(abs(s) .^ 2, 2) / (rate * sum(w .^ 2));
% Everything but the ends stands for its negative frequency as well.
inner = 2:numel(p) - (mod(n, 2) == 0);
p(inner) = 2 * p(inner);
end
