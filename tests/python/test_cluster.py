# SPDX-License-Identifier: MIT
"""A cluster's own engine verifies packages."""
import os
import shutil

from distributed import Client, LocalCluster

import kraddon


def test_dask_verifies_two_hundred_packages(package, tmp_path, monkeypatch):
    # Its workers need no runtime of sanitizers to be found again.
    monkeypatch.chdir(tmp_path)
    paths = [shutil.copy(package, tmp_path / f"{number}.kraddon") for number in range(200)]
    expected = kraddon.verify(package)
    with LocalCluster(n_workers=2, threads_per_worker=1, processes=True, dashboard_address=None,
                      local_directory=os.fspath(tmp_path / "work")) as cluster:
        with Client(cluster) as client:
            results = client.gather(client.map(kraddon.verify, paths))
            missing = client.submit(kraddon.verify, tmp_path / "missing")
            assert isinstance(missing.exception(), FileNotFoundError)
    assert results == [expected] * 200
