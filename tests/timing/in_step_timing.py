"""Measures the offset between video and audio in a real window, for each kind of stream."""

import csv
import statistics

import streams
from player import PlayerCase

_SECONDS = 8


class InStepTiming(PlayerCase):
    def test_streams(self):
        print(f"\n{'milliseconds apart':32}  pictures  compared  skipped  median     95 %  maximum")
        server = self.serve()
        for make_stream in streams.ALL:
            self.measure(server, make_stream)

    def measure(self, server, make_stream):
        directory = self.www / make_stream.__name__
        directory.mkdir()
        name = make_stream(directory, _SECONDS)
        log = directory / "sync.csv"
        run = self.play_to_end(server.url(f"{directory.name}/{name}"), "--sync-log", str(log))
        apart = _milliseconds_apart(log)
        self.assertGreater(len(apart), 1, f"nothing was measured: {run.summary()}")
        summary = run.summary()
        print(f"{directory.name:32}  {summary['pictures']:8.0f}  {len(apart):8}"
              f"  {summary['late']:7.0f}  {statistics.median(apart):6.1f}"
              f"  {statistics.quantiles(apart, n=20)[-1]:7.1f}  {max(apart):7.1f}", flush=True)


def _milliseconds_apart(log):
    with log.open(newline="") as file:
        return [abs(float(row["picture_seconds"]) - float(row["sound_seconds"])) * 1000
                for row in csv.DictReader(file)]
