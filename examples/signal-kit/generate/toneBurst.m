function x = toneBurst(rate, frequency, cycles, count, gap)
% TONEBURST  Bursts of a tone, each softened at both ends.
%
%   x = toneBurst(rate, frequency, cycles, count, gap) puts COUNT bursts of
%   CYCLES periods one after another, with GAP seconds of silence after each.
%   A burst is weighted with a Hann window, so that it starts and ends without
%   a click.
%
%   See also linearChirp, hannWindow.

if frequency <= 0 || frequency > rate / 2
    error('SignalKit:badFrequency', ...
          'frequency %g does not lie between 0 and %g', frequency, rate / 2);
end

n = max(round(cycles * rate / frequency), 1);
burst = sin(2 * pi * frequency * (0:n - 1)' / rate) .* hannWindow(n);
x = repmat([burst; zeros(round(gap * rate), 1)], count, 1);
end
