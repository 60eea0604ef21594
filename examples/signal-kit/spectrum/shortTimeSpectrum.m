function [s, f, t] = shortTimeSpectrum(x, rate, window, step)
% SHORTTIMESPECTRUM  How the spectrum of a signal changes with time.
%
%   [s, f, t] = shortTimeSpectrum(x, rate, window, step) cuts the signal X into
%   pieces as long as the column WINDOW, one every STEP samples, weights each
%   with WINDOW and takes its spectrum.
%
%   S has a row a frequency and a column a piece; F (hertz) and T (seconds, the
%   middle of each piece) say which. Only frequencies from 0 to half of RATE
%   are kept. A signal shorter than the window gives no columns.
%
%   Example:
%       x = linearChirp(8000, 2, 100, 3500);
%       [s, f, t] = shortTimeSpectrum(x, 8000, hannWindow(256), 64);
%
%   See also plotSpectrogram, powerDensity, hannWindow.

if step < 1 || step ~= round(step)
    error('SignalKit:badStep', 'step %g is not a whole number above 0', step);
end

x = x(:);
window = window(:);
n = numel(window);
starts = 1:step:numel(x) - n + 1;
kept = floor(n / 2) + 1;

s = zeros(kept, numel(starts));
for k = 1:numel(starts)
    piece = fft(x(starts(k):starts(k) + n - 1) .* window);
    s(:, k) = piece(1:kept);
end
f = (0:kept - 1)' * rate / n;
t = (starts - 1 + n / 2) / rate;
end
