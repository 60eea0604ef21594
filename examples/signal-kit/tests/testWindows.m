function testWindows()
% TESTWINDOWS  Windows are what their help says.

w = hannWindow(16);
assert(w(1) == 0);
assert(max(abs(w + circshift(w, 8) - 1)) < 1e-12);

w = blackmanWindow(64);
assert(abs(max(w) - 1) < 1e-12);

w = gaussWindow(31);
assert(max(abs(w - flipud(w))) < 1e-12);
assert(w(16) == 1);
assert(gaussWindow(1) == 1);
end
