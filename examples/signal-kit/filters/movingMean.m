function y = movingMean(x, n)
% MOVINGMEAN  The mean over N neighbours.
%
%   y = movingMean(x, n) has the length of X; N is odd. Near the ends fewer
%   neighbours count, so that a constant stays the same constant throughout.
%
%   See also applyKernel.

if mod(n, 2) ~= 1
    error('SignalKit:badLength', 'length %g is not odd', n);
end
kernel = ones(n, 1);
y = applyKernel(kernel, x) ./ applyKernel(kernel, ones(numel(x), 1));
end
