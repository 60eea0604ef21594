# SPDX-License-Identifier: MIT
"""What was measured, in a file that is written after each row."""

import json
import os

from contest import Figure
from growth import Curve


class Results:
    def __init__(self, folder, settings):
        self.path = os.path.join(folder, "results.json")
        self.settings = settings  # those that a run which continues another must share
        self.rows = {}            # figures by work
        self.groups = []          # names of those of which every row was measured
        self.curves = {}          # by what grows

    @classmethod
    def load(cls, folder):
        """The results in a folder. Throws OSError if there are none."""
        results = cls(folder, {})
        with open(results.path, encoding="utf-8") as file:
            stored = json.load(file)
        results.settings = stored["settings"]
        results.rows = {work: [Figure.from_json(figure) for figure in figures]
                        for work, figures in stored["rows"].items()}
        results.groups = stored["groups"]
        results.curves = {name: [Curve.from_json(curve) for curve in curves]
                          for name, curves in stored["curves"].items()}
        return results

    def store(self):
        os.makedirs(os.path.dirname(self.path), exist_ok=True)
        text = json.dumps({
            "settings": self.settings, "groups": self.groups,
            "rows": {work: [figure.as_json() for figure in figures]
                     for work, figures in self.rows.items()},
            "curves": {name: [curve.as_json() for curve in curves]
                       for name, curves in self.curves.items()}}, indent=2)
        with open(self.path + ".new", "w", encoding="utf-8") as file:
            file.write(text + "\n")
        os.replace(self.path + ".new", self.path)

    def figures(self):
        return [figure for figures in self.rows.values() for figure in figures]
