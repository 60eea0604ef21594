function w = gaussWindow(n, sharpness)
% GAUSSWINDOW  A bell: the best joint resolution in time and frequency.
%
%   w = gaussWindow(n) is a column of N weights, symmetric about its middle.
%   w = gaussWindow(n, sharpness) makes it narrower with a larger SHARPNESS;
%   it is the number of standard deviations from the middle to either end,
%   2.5 unless given.
%
%   See also hannWindow, blackmanWindow.

if nargin < 2
    sharpness = 2.5;
end
if n == 1
    w = 1;
    return
end
middle = (n - 1) / 2;
w = exp(-0.5 * (sharpness * ((0:n - 1)' - middle) / middle) .^ 2);
end
