function handle = plotSpectrogram(s, f, t, floorLevel)
% PLOTSPECTROGRAM  Draws a short-time spectrum: time across, frequency up.
%
%   plotSpectrogram(s, f, t) takes what shortTimeSpectrum returns.
%   plotSpectrogram(s, f, t, floorLevel) draws everything below FLOORLEVEL
%   (decibels, -80 unless given) in the darkest colour.
%   handle = plotSpectrogram(...) also returns the image's handle.
%
%   See also shortTimeSpectrum, toDecibel.

if nargin < 4
    floorLevel = -80;
end
image0 = imagesc(t, f, toDecibel(s, floorLevel), [floorLevel 0]);
axis('xy');
xlabel('time in s');
ylabel('frequency in Hz');
scale = colorbar();
ylabel(scale, 'dB below the peak');
if nargout > 0
    handle = image0;
end
end
