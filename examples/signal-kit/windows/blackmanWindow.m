function w = blackmanWindow(n)
% BLACKMANWINDOW  Three cosine terms: side lobes below -58 dB.
%
%   w = blackmanWindow(n) is a column of N weights, periodic. Its main lobe is
%   half as wide again as that of the Hann window.
%
%   See also hannWindow, gaussWindow.

phase = 2 * pi * (0:n - 1)' / max(n, 1);
w = 0.42 - 0.5 * cos(phase) + 0.08 * cos(2 * phase);
end
