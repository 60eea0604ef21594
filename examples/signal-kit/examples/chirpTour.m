%% A chirp, and how a window changes what we see
% Two seconds from 100 to 3500 Hz. Seen through a short window its times are
% sharp and its frequencies blurred; through a long one the other way round.

rate = 8000;
x = linearChirp(rate, 2, 100, 3500);

lengths = [64 256 1024];
for k = 1:numel(lengths)
    n = lengths(k);
    [s, f, t] = shortTimeSpectrum(x, rate, hannWindow(n), n / 4);
    subplot(numel(lengths), 1, k);
    plotSpectrogram(s, f, t);
    title(sprintf('window of %d samples', n));
end
