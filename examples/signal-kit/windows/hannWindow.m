function w = hannWindow(n)
% HANNWINDOW  The raised cosine: falls to zero at both ends.
%
%   w = hannWindow(n) is a column of N weights, periodic, so that windows at
%   half overlap add up to a constant.
%
%   See also blackmanWindow, gaussWindow, shortTimeSpectrum.

w = 0.5 - 0.5 * cos(2 * pi * (0:n - 1)' / max(n, 1));
end
