function h = lowpassKernel(rate, cutoff, length0)
% LOWPASSKERNEL  Coefficients of a filter that keeps what is below a frequency.
%
%   h = lowpassKernel(rate, cutoff, length0) is a column of LENGTH0
%   coefficients (odd, so that the delay is whole), a sinc weighted with a
%   Blackman window. Constant signals pass unchanged: the sum of H is 1.
%
%   See also applyKernel, blackmanWindow.

if cutoff <= 0 || cutoff >= rate / 2
    error('SignalKit:badFrequency', ...
          'cut-off %g does not lie between 0 and %g', cutoff, rate / 2);
end
if mod(length0, 2) ~= 1
    error('SignalKit:badLength', 'length %g is not odd', length0);
end

middle = (length0 - 1) / 2;
k = (-middle:middle)';
h = 2 * cutoff / rate * ones(length0, 1);
beside = k ~= 0;
h(beside) = sin(2 * pi * cutoff / rate * k(beside)) ./ (pi * k(beside));
% One more and without the first: the periodic window made symmetric.
w = blackmanWindow(length0 + 1);
h = h .* w(2:end);
h = h / sum(h);
end
