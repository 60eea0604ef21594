function x = pinkNoise(n)
% PINKNOISE  Noise with the same power in every octave.
%
%   x = pinkNoise(n) is a column of N samples, scaled to a standard deviation
%   of 1. White noise is shaped in the frequency domain with 1/sqrt(f); the
%   constant part is left out.
%
%   See also powerDensity.

if n < 2 || n ~= round(n)
    error('SignalKit:badCount', 'count %g is not a whole number above 1', n);
end

half = floor(n / 2);
spectrum = fft(randn(n, 1));
weight = [0; 1 ./ sqrt((1:half)')];
% The upper half mirrors the lower one, or the result would not be real.
weight = [weight; weight(n - half:-1:2)];
x = real(ifft(spectrum .* weight));
x = x / std(x);
end
