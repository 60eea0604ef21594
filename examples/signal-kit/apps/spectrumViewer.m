function spectrumViewer(x, rate)
% SPECTRUMVIEWER  A window that shows a signal and its short-time spectrum.
%
%   spectrumViewer(x, rate) opens with the signal X. The slider sets the
%   window's length from 64 to 4096 samples; "Keep" writes the signal to
%   data/recordings, under the time of day.
%
%   See also shortTimeSpectrum, plotSpectrogram.

if nargin < 2
    rate = 8000;
    x = linearChirp(rate, 2, 100, 3500);
end
window = figure('Name', 'Spectrum Viewer', 'NumberTitle', 'off');
uicontrol(window, 'Style', 'slider', 'Min', 6, 'Max', 12, 'Value', 8, ...
          'Position', [20 10 300 20], 'Callback', @redraw);
uicontrol(window, 'Style', 'pushbutton', 'String', 'Keep', ...
          'Position', [340 10 80 20], 'Callback', @keep);
draw(256);

    function redraw(slider, ~)
        draw(2 ^ round(get(slider, 'Value')));
    end

    function draw(n)
        [s, f, t] = shortTimeSpectrum(x, rate, hannWindow(n), max(n / 4, 1));
        plotSpectrogram(s, f, t);
        title(sprintf('window of %d samples', n));
    end

    function keep(~, ~)
        here = fileparts(mfilename('fullpath'));
        target = fullfile(here, '..', 'data', 'recordings', ...
                          [datestr(now(), 'HHMMSS') '.csv']);
        dlmwrite(target, x, 'precision', '%.9g');
    end
end
