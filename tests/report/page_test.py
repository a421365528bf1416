"""The report of a run, opened in a browser."""

import os
import re
import subprocess
import unittest

from browser import Browser
from support import host, mp4, reference
from support.hls import HlsCase
from support.media_tools import make_file

_CHARTS = ("chart-status", "chart-arrival", "chart-distance", "chart-steps", "chart-reported",
           "chart-sizes", "chart-rate")
# How many pixels of a chart's canvas have the colour that the style sheet names `name`.
_PIXELS = """
((chart, name) => {
  const canvas = document.querySelector(`#${chart} canvas`);
  const probe = document.createElement("i");
  probe.style.color = getComputedStyle(document.documentElement).getPropertyValue(`--${name}`);
  document.body.append(probe);
  const wanted = getComputedStyle(probe).color.match(/[0-9]+/g).map(Number);
  probe.remove();
  const pixels = canvas.getContext("2d").getImageData(0, 0, canvas.width, canvas.height).data;
  let count = 0;
  for (let at = 0; at < pixels.length; at += 4) {
    const near = wanted.every((value, i) => Math.abs(value - pixels[at + i]) < 4);
    if (near && pixels[at + 3] > 250) ++count;
  }
  return count;
})"""


def setUpModule():
    """One browser for all cases."""
    ReportCase.shared_browser = Browser()
    unittest.addModuleCleanup(ReportCase.shared_browser.close)


class ReportCase(HlsCase):
    """Each case has its own page in the browser."""

    shared_browser = None

    def setUp(self):
        super().setUp()
        self.page = self.directory / "report.html"
        self.browser = self.shared_browser.open_page()
        self.addCleanup(self.browser.close)

    def play_and_report(self, address, *options, **ending):
        return self.play(address, "--report", str(self.page), *options, **ending)

    def open(self):
        self.browser.open(self.page)
        self.assertEqual(self.browser.complaints, [])
        self.assertEqual(self.browser.requests, [self.page.as_uri()])

    def text(self, selector):
        return self.browser.value(f"document.querySelector('{selector}').textContent")

    def texts(self, selector):
        return self.browser.value(
            f"[...document.querySelectorAll('{selector}')].map((found) => found.textContent)")

    def rows(self, table):
        return self.browser.value(
            f"[...document.querySelectorAll('#{table} tbody tr')]"
            ".map((row) => [...row.cells].map((cell) => cell.textContent))")

    def pixels(self, chart, colour):
        return self.browser.value(f"{_PIXELS}('{chart}', '{colour}')")

    def report_of_sample(self):
        """Plays a sample without faults, opens its report and returns the run."""
        sample = self.make_hls(3)
        frames = self.frames_of(self.joined(sample.segments))
        run = self.play_and_report(f"file://{sample.playlist}", frames=frames)
        self.open()
        return run


class PageTest(ReportCase):
    def test_charts_are_drawn_in_both_schemes(self):
        self.report_of_sample()
        for scheme in ("light", "dark", "light"):
            self.browser.choose_scheme(scheme)
            for chart in _CHARTS:
                colour = "third" if chart == "chart-reported" else "video"
                self.assertGreater(self.pixels(chart, colour), 5, f"{chart}, {scheme}")
        self.assertEqual(self.browser.complaints, [])

    def test_legend_shows_the_latest_values_at_the_cursor(self):
        run = self.report_of_sample()
        self.browser.value("document.getElementById('chart-status').scrollIntoView()")
        right, middle = self.browser.value(
            "((box) => [box.right - 2, box.top + box.height / 2])"
            "(document.querySelector('#chart-status .u-over').getBoundingClientRect())")
        self.browser.call("Input.dispatchMouseEvent", type="mouseMoved", x=right, y=middle)
        self.browser.settle()
        (result,) = run.values("result")
        values = self.texts("#chart-status .u-value")
        self.assertIn(result[:50], values[2])
        last = max(run.frames_of("audio"), key=lambda frame: frame.pts)
        self.assertEqual(values[6], f"{last.pts / 90000:.3f} s")

    def test_counts_match_the_dump(self):
        run = self.report_of_sample()
        table = {row[0]: row[1:] for row in self.rows("table-frames")}
        kinds = [run.frames_of(kind) for kind in ("video", "audio")]
        self.assertEqual(table["frames"], [f"{len(frames):,}" for frames in kinds])
        self.assertEqual(
            table["bytes"], [f"{sum(frame.size for frame in frames):,}" for frames in kinds])
        self.assertEqual(
            table["last time stamp"],
            [f"{max(frame.pts for frame in frames) / 90000:.3f} s" for frames in kinds])
        # Lines that two threads report at the same time may have another order in the dump.
        self.assertCountEqual(
            [row[1:] for row in self.rows("table-lines")],
            [[event.name, event.value] for event in run.events if event.name in ("message", "result")])
        self.assertEqual(table["gaps"], ["0", "0"])
        self.assertIn("Nothing odd.", self.text("#verdict"))

    def test_click_on_a_column_head_sorts_and_a_second_click_reverses(self):
        self.report_of_sample()
        tables = self.browser.value(
            "[...document.querySelectorAll('.table table')].map((table) => table.id)")
        self.assertEqual(len(tables), 5)
        for table in tables:
            kinds = self.browser.value(
                f"[...document.querySelectorAll('#{table} th')].map((head) => head.className)")
            for at, kind in enumerate(kinds):
                with self.subTest(table=table, column=at):
                    self.assert_sorts(table, at, _number if kind == "number" else str.casefold)

    def assert_sorts(self, table, at, key):
        rows = self.rows(table)
        for direction, reverse in (("ascending", False), ("descending", True)):
            head = f"document.querySelectorAll('#{table} th')[{at}]"
            self.browser.value(f"{head}.querySelector('button').click()")
            self.assertEqual(self.browser.value(f"{head}.getAttribute('aria-sort')"), direction)
            ordered = self.rows(table)
            self.assertEqual(sorted(ordered), sorted(rows))
            keys = [key(row[at]) for row in ordered if row[at] != "–"]
            self.assertEqual(keys, sorted(keys, reverse=reverse))

    def test_light_and_dark_differ(self):
        self.report_of_sample()
        appearance = {}
        for scheme in ("light", "dark"):
            self.browser.choose_scheme(scheme)
            ground, ink = self.browser.value(
                "(({backgroundColor, color}) => [backgroundColor, color])(getComputedStyle(document.body))")
            appearance[scheme] = sum(_channels(ground)), sum(_channels(ink)), self.browser.picture()
        self.assertGreater(appearance["light"][0], appearance["light"][1] + 300)
        self.assertGreater(appearance["dark"][1], appearance["dark"][0] + 300)
        self.assertNotEqual(appearance["light"][2], appearance["dark"][2])

    def test_page_fits_a_phone_and_adapts_to_its_rotation(self):
        self.browser.choose_size(360, 740, mobile=True)
        self.report_of_sample()
        for width in (360, 740, 320):
            self.browser.choose_size(width, 740, mobile=True)
            shown = self.browser.value("[document.documentElement.scrollWidth, innerWidth]")
            self.assertEqual(shown, [width, width])
            charts = self.browser.value(
                "[...document.querySelectorAll('canvas')].map((c) => c.getBoundingClientRect().right)")
            self.assertLess(max(charts), width)


class OddStreamTest(ReportCase):
    def test_gap_is_reported_on_top(self):
        sample = self.make_hls(4)
        lines = sample.playlist.read_text().splitlines()
        removed = lines.index("seg0001.ts")
        del lines[removed - 1:removed + 1]
        sample.playlist.write_text("\n".join(lines) + "\n")
        first, _, *others = sample.segments
        self.play_and_report(f"file://{sample.playlist}",
                             frames=self.frames_of(self.joined([first, *others])))
        self.open()
        self.assertIn("odd", self.text("#verdict"))
        self.assertIn("Gap in the video", self.texts("#findings strong"))
        (gap,) = [row for row in self.rows("table-jumps") if row[0] == "video"]
        self.assertEqual(gap[1], "gap")
        self.assertAlmostEqual(float(gap[6].removesuffix(" s")), 1.04, delta=0.005)
        self.assertIn(f"The widest is {gap[6]}", self.text("#findings ul"))

    def test_stream_without_audio_is_reported_on_top(self):
        path = make_file(
            ["ffmpeg", "-nostdin", "-v", "error", "-y", "-f", "lavfi",
             "-i", "testsrc2=size=160x120:rate=25:duration=1", "-c:v", "libx264", "-f", "mpegts"],
            self.www / "silent.ts")
        frames = len(reference.pes_packets(path, "video")) - 1
        self.play_and_report(f"file://{path}", frames=frames)
        self.open()
        self.assertIn("Video without audio", self.texts("#findings strong"))

    def test_address_without_frames_is_reported_on_top(self):
        self.play_and_report(f"file://{self.directory}/none.ts", until=host.TRANSFER_ENDED)
        self.open()
        self.assertIn("No frame was received", self.texts("#findings strong"))

    def test_last_run_of_a_repeat_is_reported(self):
        sample = self.make_hls(2)
        whole = self.frames_of(self.joined(sample.segments))
        run = self.play_and_report(f"file://{sample.playlist}", "--repeat", "1",
                                   frames=(whole, whole + 1))
        self.open()
        frames = int(self.rows("table-frames")[0][1].replace(",", ""))
        self.assertEqual(frames, run.summary["runs"][1]["video"]["frames"])


class HostileTextTest(ReportCase):
    def test_markup_in_address_and_lines_is_not_executed(self):
        markup = "</script><script>window.harm=1</script><img src=x onerror='window.harm=1'>"
        address = f"file://{self.directory}/{markup}\x1b[31m<!--.ts"
        self.play_and_report(address, line=mp4.VERDICT)
        self.open()
        self.assertIn(markup, self.text("#address"))
        self.assertIn(markup, self.text("#table-lines"))
        self.assertIn("\\u001b[31m", self.text("#table-lines"))
        self.assertIsNone(self.browser.value("window.harm"))
        self.assertEqual(self.browser.value("document.images.length"), 0)
        self.assertEqual(self.browser.dialogs, [])

    def test_bytes_that_are_no_text_are_shown_as_replacement_characters(self):
        address = os.fsencode(f"file://{self.directory}/") + b"\xff\xc3(\xed\xa0\x80.ts"
        self.play_and_report(os.fsdecode(address), line=mp4.VERDICT)
        self.open()
        self.assertIn("\ufffd", self.text("#address"))

    def test_policy_of_the_page_forbids_requests(self):
        self.report_of_sample()
        self.browser.value("fetch('http://127.0.0.1:9/').catch(() => null)")
        self.assertIn("Content Security Policy", " ".join(self.browser.complaints))


class OptionTest(ReportCase):
    def test_file_that_cannot_be_written_is_refused_before_anything_plays(self):
        command = [*self._host, "file:///none.ts", "--report", str(self.directory / "none" / "a.html")]
        ended = subprocess.run(command, capture_output=True, check=False, text=True, timeout=60)
        self.assertEqual(ended.returncode, 2)
        self.assertIn("--report: cannot write", ended.stderr)
        self.assertEqual(ended.stdout, "")


def _number(cell):
    """The number in a cell such as "1.5 s", "12,345" or "691 kbit/s"."""
    digits, prefix = re.match(r"(-?[\d,.]+) ?([kMG]?)", cell).groups()
    return float(digits.replace(",", "")) * {"": 1, "k": 1e3, "M": 1e6, "G": 1e9}[prefix]


def _channels(colour):
    return [int(part) for part in colour.removeprefix("rgb(").removesuffix(")").split(",")]


if __name__ == "__main__":
    unittest.main()
