function d = toDecibel(amplitude, floorLevel)
% TODECIBEL  Amplitudes as decibels below the largest one.
%
%   d = toDecibel(amplitude, floorLevel) is 0 for the largest absolute value
%   and never less than FLOORLEVEL (-80 unless given), silence included.
%
%   See also plotSpectrogram.

if nargin < 2
    floorLevel = -80;
end
size0 = abs(amplitude);
top = max(size0(:));
if isempty(top) || top == 0
    d = floorLevel * ones(size(amplitude));
    return
end
d = max(20 * log10(size0 / top + realmin), floorLevel);
end
