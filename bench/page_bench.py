"""page_bench.py WRITE_PAGE PHONES: what the page of a large archive takes to open, and to answer a key.

10,000 contacts and entries, 50,000 messages, 5,000 photos, in a browser without a window. Milliseconds: "time" by the
clock, "work" of the page's own thread, which does not depend on what else the machine does. A section is open when it is
built and laid out; a key is answered when the list that it leaves is.
"""
import statistics
import sys
import tempfile
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "tests/page"))
import archives
from browser import Browser

KEY = """
const input = document.querySelector('.view-' + arguments[0] + ' input[type=search]');
input.value = arguments[1];
const start = performance.now();
input.dispatchEvent(new Event('input'));
document.body.getBoundingClientRect();
return performance.now() - start;
"""
JUMP = """
const scroller = document.querySelector('.bubbles').parentElement;
const start = performance.now();
scroller.scrollTop = scroller.scrollHeight * arguments[0];
scroller.dispatchEvent(new Event('scroll'));
await new Promise(requestAnimationFrame);
document.body.getBoundingClientRect();
return performance.now() - start;
"""


class Meter:
    def __init__(self, browser):
        self.browser = browser
        browser.driver.execute_cdp_cmd("Performance.enable", {"timeDomain": "threadTicks"})

    def work(self):
        metrics = self.browser.driver.execute_cdp_cmd("Performance.getMetrics", {})["metrics"]
        return 1000 * next(metric["value"] for metric in metrics if metric["name"] == "TaskDuration")

    def of(self, script, *arguments):
        before = self.work()
        time = self.browser.run(script, *arguments)
        return time, self.work() - before


def row(name, figures):
    times, works = zip(*figures)
    return f"{name:24}{statistics.median(times):8.1f}{max(times):8.1f}{statistics.median(works):10.1f}{max(works):8.1f}"


def main(write_page, phones):
    programs = archives.Programs(None, write_page, Path(phones))
    browser = Browser()
    with tempfile.TemporaryDirectory() as folder:
        archive = Path(folder) / "archive"
        archives.large_archive(programs, archive, contacts=10000, messages=50000, photos=5000)
        print(f"{'':24}{'time':>8}{'worst':>8}{'work':>10}{'worst':>8}")
        for section, words in {"overview": [], "contacts": ["person 1234", "elodie"], "calendar": ["meeting 77"],
                               "messages": ["umbrella station", "number 4999", "e e e"], "photos": ["photo 49"],
                               "files": ["photo 49"], "statistics": []}.items():
            opened = []
            for _ in range(3):
                browser.open(archive, section)
                opened.append((browser.run("return performance.getEntriesByType('mark')[0].startTime"), Meter(browser).work()))
            print(row("open " + section, opened))
            meter = Meter(browser)
            keys = [word[:length] for word in words for length in list(range(1, len(word) + 1)) + list(range(len(word) - 1, -1, -1))]
            if keys:
                print(row("  a key", [meter.of(KEY, section, key) for key in keys]))
        browser.open(archive, "messages/0")
        meter = Meter(browser)
        print(row("  a jump in a talk", [meter.of("return (async () => {" + JUMP.replace("arguments[0]", str(i * 7 % 40 / 40)) + "})()") for i in range(40)]))
    browser.close()


if __name__ == "__main__":
    main(*sys.argv[1:3])
