%% A tone under noise
% Ten bursts of 440 Hz, as much noise again, and a low-pass filter that gives
% the bursts back.

rate = 8000;
clean = toneBurst(rate, 440, 40, 10, 0.1);
noisy = clean + std(clean) * pinkNoise(numel(clean));

h = lowpassKernel(rate, 600, 201);
restored = applyKernel(h, noisy);

fprintf('error before: %.3f, after: %.3f\n', ...
        sqrt(mean((noisy - clean) .^ 2)), sqrt(mean((restored - clean) .^ 2)));

t = (0:numel(clean) - 1)' / rate;
plot(t, noisy, t, restored, t, clean);
legend('noisy', 'restored', 'clean');
xlabel('time in s');
