function y = applyKernel(h, x)
% APPLYKERNEL  Filters a signal without moving it.
%
%   y = applyKernel(h, x) has the length of X. The delay of the symmetric
%   kernel H, (numel(h) - 1) / 2 samples, is taken out again; beyond its ends
%   the signal counts as zero.
%
%   See also lowpassKernel, movingMean.

full = conv(x(:), h(:));
delay = (numel(h) - 1) / 2;
y = full(delay + 1:delay + numel(x));
end
