function runTests()
% RUNTESTS  Runs every test of this folder; fails with the names of those that fail.

here = fileparts(mfilename('fullpath'));
root = fileparts(here);
for folder = {'generate', 'windows', 'spectrum', 'filters', 'plotting'}
    addpath(fullfile(root, folder{1}));
end

tests = {@testWindows, @testSpectrum, @testFilters};
failed = {};
for k = 1:numel(tests)
    try
        tests{k}();
        fprintf('ok      %s\n', func2str(tests{k}));
    catch problem
        fprintf('FAILED  %s: %s\n', func2str(tests{k}), problem.message);
        failed{end + 1} = func2str(tests{k}); %#ok<AGROW>
    end
end
if ~isempty(failed)
    error('SignalKit:testsFailed', '%s', strjoin(failed, ', '));
end
end
