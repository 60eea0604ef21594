function x = linearChirp(rate, duration, first, last)
% LINEARCHIRP  A tone whose frequency rises or falls at a constant pace.
%
%   x = linearChirp(rate, duration, first, last) is a column of
%   round(rate * duration) samples. It begins at the frequency FIRST and
%   reaches LAST at the end; both lie between 0 and half of RATE.
%
%   Example: two seconds from 100 to 3500 Hz
%       x = linearChirp(8000, 2, 100, 3500);
%
%   See also toneBurst, shortTimeSpectrum.

if rate <= 0
    error('SignalKit:badRate', 'rate %g is not positive', rate);
end
if duration < 0
    error('SignalKit:badDuration', 'duration %g is negative', duration);
end
if min(first, last) < 0 || max(first, last) > rate / 2
    error('SignalKit:badFrequency', ...
          'frequencies %g and %g do not both lie between 0 and %g', first, last, rate / 2);
end

t = (0:round(rate * duration) - 1)' / rate;
% The phase is the integral of the frequency, hence the half.
slope = (last - first) / max(duration, 1 / rate);
x = sin(2 * pi * (first * t + slope * t .^ 2 / 2));
end
