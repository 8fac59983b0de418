"""The page of an archive in a real browser, opened from disk.

page_test.py OVPHONE WRITE_PAGE PHONES [TEST...]
"""
import shutil
import sys
import tempfile
import unittest
import urllib.parse
from pathlib import Path

from selenium.webdriver.common.keys import Keys

import archives
from browser import Browser

SECTIONS = ["overview", "contacts", "calendar", "messages", "photos", "notes", "files", "statistics", "losses"]
programs = None

# Texts whose contrast with what lies behind them is below what people with weak eyes need; canvases and pictures aside.
LOW_CONTRAST = """
const colour = (text) => (text.match(/[\\d.]+/g) ?? [0, 0, 0, 0]).map(Number);
const light = ([r, g, b]) => [r, g, b].map((v) => (v /= 255) <= 0.04045 ? v / 12.92 : ((v + 0.055) / 1.055) ** 2.4)
    .reduce((sum, v, i) => sum + v * [0.2126, 0.7152, 0.0722][i], 0);
const behind = (element) => {
    for (; element; element = element.parentElement) {
        const ground = colour(getComputedStyle(element).backgroundColor);
        if (ground.length < 4 || ground[3] > 0.9) return ground;
    }
    return [255, 255, 255];
};
const bad = [];
const walker = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
for (let node = walker.nextNode(); node; node = walker.nextNode()) {
    const element = node.parentElement;
    if (!node.data.trim() || !element.checkVisibility() || element.closest('.avatar, .unseen, option, noscript')) continue;
    const [a, b] = [light(colour(getComputedStyle(element).color)), light(behind(element))];
    const ratio = (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05);
    if (ratio < 4.5) bad.push(element.className + ' "' + node.data.slice(0, 20) + '" ' + ratio.toFixed(2));
}
return bad;
"""


class PageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = Path(tempfile.mkdtemp(prefix="ovphone-page-"))
        cls.addClassCleanup(shutil.rmtree, cls.folder, ignore_errors=True)
        cls.make()
        cls.browser = Browser()
        cls.addClassCleanup(cls.browser.close)

    @classmethod
    def make(cls):
        cls.data = archives.demo_archive(programs, cls.folder)

    def setUp(self):
        self.browser.resize(1280, 860)
        self.browser.set_dark(False)

    def tearDown(self):
        self.assertEqual([], self.browser.complaints())
        self.assertEqual([], self.browser.foreign_requests())

    def search(self, section, text):
        field = self.browser.find(f".view-{section} input[type=search]")
        field.send_keys(Keys.CONTROL + "a" + Keys.NULL, Keys.BACKSPACE, text)
        return self.found(section)

    def found(self, section):
        return self.browser.find(f".view-{section} .found").text


class Demo(PageTest):
    def test_every_section_opens(self):
        for dark in (False, True):
            self.browser.set_dark(dark)
            self.browser.open(self.folder)
            for section in SECTIONS:
                with self.subTest(section=section, dark=dark):
                    self.browser.go(section)
                    self.assertTrue(self.browser.all(f".view-{section} h1"))
                    self.assertEqual([], self.browser.run(LOW_CONTRAST))
                    self.assertEqual([], self.browser.unnamed_controls())

    def test_overview(self):
        self.browser.open(self.folder)
        self.assertEqual("Nokia N95", self.browser.find("h1").text)
        shown = dict(zip(self.browser.texts(".tile-name"), self.browser.texts(".tile-number")))
        counts = self.data["archive"]["sections"]
        self.assertEqual({"contacts": str(counts["contacts"]["count"]), "entries": str(counts["calendar"]["count"]),
                          "messages": str(counts["messages"]["count"]), "notes": str(counts["notes"]["count"]),
                          "files": str(counts["files"]["count"])}, shown)

    def test_contacts(self):
        self.browser.open(self.folder, "contacts")
        for query, name in (("muller anna", "Anna Müller"), ("0171 392 0001", "Anna Müller"), ("ΨΑΡΑΚΗΣ", "Χρήστος Ψαράκης")):
            self.assertIn("of 171 contacts", self.search("contacts", query))
            self.assertIn(name, self.browser.texts(".row-title"))
        self.search("contacts", "no such person")
        self.assertEqual([], self.browser.all(".view-contacts .row"))
        self.search("contacts", "Praxis am Mühlbach")
        self.browser.click(".view-contacts .row a[href='#contacts/0']")
        self.browser.wait(lambda: self.browser.texts(".pane-detail h2") == ["Anna Müller"], "the card")
        card = self.browser.find(".pane-detail").text
        for text in ("+49 171 3920001", "anna@example.org", "Lindenstraße 12\n10969 Berlin\nDeutschland", "12 April 1975"):
            self.assertIn(text, card)
        self.browser.wait(lambda: self.browser.run("return document.querySelector('.portrait').naturalWidth") > 0, "the picture")

    def test_calendar(self):
        self.browser.open(self.folder, "calendar")
        self.assertEqual(["July", "2008"], [self.browser.run("return arguments[0].selectedOptions[0].textContent", select)
                                            for select in self.browser.all(".when select")])
        self.browser.click("[data-day='2008-07-18']")
        self.assertEqual("Friday 18 July 2008", self.browser.find(".day-entries h2").text.replace(",", ""))
        self.assertIn("Schwimmen", self.browser.find(".day-entries").text)
        self.browser.press(Keys.ARROW_DOWN, Keys.ARROW_DOWN)  # to 1 August, a Friday as well
        self.assertEqual("2008-08-01", self.browser.focused().get_attribute("data-day"))
        self.assertIn("of 300 entries", self.search("calendar", "Wohnungsbesichtigung"))
        self.browser.click(".view-calendar .row a")
        self.assertIn("3. OG links, Klingel »Brandtner«", self.browser.find(".day-entries").text)
        self.browser.click("label[for=choice-view-agenda]")
        self.assertIn("in 2004", self.found("calendar"))
        self.assertIn("Wohnungsbesichtigung", self.browser.find(".agenda").text)
        self.browser.click("label[for=choice-view-to-dos]")
        self.assertIn("Keller aufräumen", self.browser.find(".agenda").text)

    def test_messages(self):
        self.browser.open(self.folder, "messages")
        self.assertIn("505 messages", self.found("messages"))
        self.assertIn("1 message found", self.search("messages", "zahnschmerzen harmsen"))
        self.browser.click(".view-messages .row a")
        chosen = self.browser.find(".bubble.chosen")
        self.assertIn("Harmsen hier: habe seit gestern Zahnschmerzen.", chosen.text)
        self.assertEqual("Dörte Harmsen", self.browser.find(".talk-head h2").text)
        self.assertIn("27 April 2004", self.browser.find(".talk").text)
        self.browser.press(Keys.ESCAPE)
        shown = self.browser.run("const box = arguments[0].getBoundingClientRect(); return box.top >= 0 && box.bottom <= innerHeight", chosen)
        self.assertTrue(shown, "the message that was chosen is in view")

    def test_photos(self):
        self.browser.open(self.folder, "photos")
        tiles = self.browser.all(".photo button")
        self.assertEqual(13, len(tiles))
        self.browser.wait(lambda: self.browser.run("return [...document.querySelectorAll('.photo img')].every((i) => i.naturalWidth > 0)"), "the photos")
        tiles[0].click()
        first = self.browser.find("dialog .caption strong").text
        self.browser.press(Keys.ARROW_RIGHT)
        self.assertNotEqual(first, self.browser.find("dialog .caption strong").text)
        self.browser.wait(lambda: self.browser.run("return document.querySelector('.large').naturalWidth") > 0, "the large photo")
        self.browser.press(Keys.ESCAPE)
        self.assertEqual([], self.browser.all("dialog"))
        self.assertEqual(tiles[1], self.browser.focused())

    def test_notes_and_files(self):
        self.browser.open(self.folder, "notes")
        self.assertIn("1 of 40", self.search("notes", "rhabarber"))
        self.assertIn("500 g Rhabarber\n200 g Zucker", self.browser.find(".note").text)
        self.browser.go("files")
        for name in ("E:", "Images", "Urlaub 2008"):
            self.browser.wait(lambda: any(text.startswith(name) for text in self.browser.texts(".view-files .row-title")), name)
            next(row for row in self.browser.all(".view-files .row a") if row.text.startswith(name)).click()
        self.browser.wait(lambda: "Strand 01.jpg" in self.browser.texts(".view-files .row-title"), "the files of a folder")
        self.search("files", "strand łodz")
        link = self.browser.find(".view-files .row a").get_attribute("href")
        self.assertTrue(Path(urllib.parse.unquote(urllib.parse.urlparse(link).path)).is_file(), link)

    def test_statistics(self):
        self.browser.open(self.folder, "statistics")
        drawn = """const canvas = document.querySelector('canvas');
            return canvas.width > 0 && new Set(canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height).data).size > 3"""
        self.browser.wait(lambda: self.browser.run(drawn), "a plot")
        self.browser.click(".statistic summary")
        figures = self.browser.wait(lambda: self.browser.texts(".figures td"), "the figures")
        self.assertEqual(sum("time" in message for message in self.data["messages"]), sum(map(int, figures)))
        self.browser.all(".statistic summary")[1].click()
        self.browser.wait(lambda: "Lukas Fährmann" in self.browser.texts(".figures tbody th"), "the second table")

    def test_losses(self):
        self.browser.open(self.folder, "losses")
        self.browser.click(".loss summary")
        self.assertIn("Anna Müller", self.browser.find(".loss-items").text)
        counts = [int(text) for text in self.browser.texts(".loss .count")]
        self.assertEqual(len(self.data["losses"]), sum(counts))

    def test_with_keys_alone(self):
        self.browser.open(self.folder)
        def tab_to(selector):
            for _ in range(40):
                self.browser.press(Keys.TAB)
                focused = self.browser.focused()
                self.assertNotEqual("none", focused.value_of_css_property("outline-style"), "the focus can be seen")
                if self.browser.run("return arguments[0].matches(arguments[1])", focused, selector):
                    return focused
            self.fail("Tab does not reach " + selector)
        tab_to("nav a[href='#contacts']").send_keys(Keys.ENTER)
        self.browser.wait_for_section("contacts")
        tab_to("input[type=search]").send_keys("bj")
        self.browser.press(Keys.ESCAPE)
        self.assertEqual("171 contacts", self.found("contacts"))
        tab_to(".row a")
        self.browser.press(Keys.ARROW_DOWN, Keys.ARROW_DOWN, Keys.ENTER)
        self.browser.wait(lambda: self.browser.texts(".pane-detail h2") == ["Anna Müller"], "the third contact")
        self.browser.press(Keys.END)
        self.browser.wait(lambda: self.browser.focused().find_element("xpath", "..").get_attribute("aria-posinset") == "171", "the last contact")
        self.browser.press(Keys.ENTER, Keys.TAB)
        self.assertIn("pane-detail", self.browser.focused().get_attribute("class"))

    def test_on_a_small_screen(self):
        self.browser.resize(360, 640)
        self.browser.open(self.folder)
        for section in SECTIONS:
            self.browser.go(section)
            wide = self.browser.run("""return [document.scrollingElement, ...document.querySelectorAll('#main .scroller')].filter((element) =>
                element.scrollWidth > element.clientWidth + 1 || element.getBoundingClientRect().right > innerWidth + 1).map((e) => e.className)""")
            self.assertEqual([], wide, section)
        self.browser.go("messages")
        self.browser.click(".view-messages .row a")
        self.browser.wait(lambda: self.browser.all(".bubble"), "the talk")
        self.assertEqual([], self.browser.all(".pane-list"))
        self.browser.click(".view-messages .back")
        self.browser.wait(lambda: self.browser.all(".view-messages .row"), "the list again")


class Hostile(PageTest):
    TEXTS = ["<img src=x onerror=hacked()>", "</script><script>hacked()</script>", "\u202eslrig\u2066 ot\u202a", "'\"><svg/onload=hacked()>",
             "javascript:hacked()", "__proto__", "{{constructor}}", "\ud800 half", "\u0000\u0007\u2028\u2029"]

    @classmethod
    def make(cls):
        gone = {"onPhone": False, "goneSince": "2026-10-05T08:00:00Z"}
        name = "100% #1 \"a\" ?b <i>&'.png"
        (cls.folder / "files/E").mkdir(parents=True)
        shutil.copy(programs.phones / "demo/files/C/Data/Images/200808/Шахматы.png", cls.folder / "files/E" / name)
        texts = cls.TEXTS
        shutil.copy(cls.folder / "files/E" / name, cls.folder / "javascript:hacked()")
        files = [{"path": "E:/" + name, "name": name, "kind": "file", "size": 145, "file": "files/E/" + name, **gone}]
        files += [{"path": "E:/" + text, "name": text + ".jpg", "kind": "file", "file": path}
                  for text, path in zip(texts, ["../../secret.jpg", "files/../../secret.jpg", "/etc/passwd", "https://example.com/a.jpg", "javascript:hacked()"])]
        files += [{"path": "E:/page.html", "name": "page.html", "kind": "file", "file": "files/E/page.html"},
                  {"path": "E:/lost", "name": "lost", "kind": "file", "reason": texts[0]}]
        cls.data = {
            "contacts": [{"firstName": text, "web": [text], "email": [text + "@x"], "note": text, "mobile": [text], "other": [text], "company": [text],
                          "picture": ["../" + text]} for text in texts] + [{"firstName": "Gone", "mobile": ["1"], **gone}],
            "calendar": [{"type": "meeting", "start": "2008-07-14T10:00:00", "summary": text, "location": text, "description": text, "calendar": text,
                          "rule": text} for text in texts] + [{"type": text, "start": text, "summary": text} for text in texts],
            "messages": [{"time": "2008-07-14T10:00:00", "direction": "received", "addresses": [text], "names": [text], "text": text} for text in texts],
            "notes": [{"text": text, **gone} for text in texts],
            "files": files,
            "losses": [{"section": "contacts", "kind": "lost", "item": text, "what": text} for text in texts],
            "archive": {"version": 1, "phone": {"name": texts[0] + texts[2], "model": texts[1], texts[3]: texts[3]},
                        "runs": [{"started": texts[0], "by": texts[1]}],
                        "sections": {**archives.sections(contacts=len(texts) + 1, messages=len(texts), files=len(files)),
                                     "calendar": {"state": "partial", "count": len(texts), "listed": 99, "reason": texts[0]}}},
        }
        archives.write_archive(programs, cls.folder, cls.data)

    def test_texts_are_texts(self):
        self.browser.open(self.folder)
        for section in SECTIONS:
            self.browser.go(section)
            for index in range(3 if section in ("contacts", "messages") else 0):
                self.browser.run(f"location.hash = '#{section}/{index}'")
                self.browser.wait(lambda: self.browser.all(".pane-detail h2"), "the detail")
            if section == "losses":
                self.browser.click("summary")
        self.browser.run("document.querySelector('#sections a').click()")
        self.assertEqual(0, self.browser.run("return document.querySelectorAll('#main script, #main iframe, #main [onerror], #main svg:not(.icon)').length"))
        self.assertEqual([], self.browser.run("return [...document.querySelectorAll('#main [src], #main [href], a')].map((e) => e.href ?? e.src)"
                                              ".filter((url) => typeof url === 'string' && !/^(file:|mailto:|tel:)/.test(url) || /secret|passwd/.test(url))"))
        self.assertFalse(self.browser.run("return 'hacked' in window"))
        shown = self.browser.run("return [...document.querySelectorAll('.note .prose')].map((element) => element.textContent)")
        self.assertEqual([text for text in self.TEXTS if text.strip() and "\ud800" not in text], [text for text in shown if "half" not in text])
        turned = self.browser.run("""return [...document.querySelectorAll('#main *, .side *')].filter((element) => [...element.childNodes].some((node) =>
            node.nodeType === 3 && node.data.includes('\\u202e')) && !/isolate|plaintext/.test(getComputedStyle(element).unicodeBidi)).length""")
        self.assertEqual(0, turned, "direction marks end with their text")
        self.assertNotIn("\u202e", self.browser.driver.title)

    def test_what_is_gone_or_lost_is_marked(self):
        self.browser.open(self.folder, "notes")
        self.assertEqual({"no longer on the phone since 5 Oct 2026"}, set(self.browser.texts(".note .gone")))
        self.browser.go("calendar")
        self.assertIn("90 of 99 entries are missing.", self.browser.find(".notice").text)
        self.browser.go("files")
        self.browser.click(".view-files .row a")
        rows = {row.text: row.find_element("css selector", "a").get_attribute("href") for row in self.browser.all(".view-files .row")}
        self.assertIn("<img src=x onerror=hacked()>", next(text for text, link in rows.items() if text.startswith("lost")))
        self.assertEqual(2, sum(link is not None and "#files" not in link for link in rows.values()), rows)
        self.browser.go("photos")
        loaded = "return [...document.querySelectorAll('.photo img')].filter((image) => image.naturalWidth > 0).map((image) => image.getAttribute('src'))"
        self.browser.wait(lambda: len(self.browser.run(loaded)) == 2, "names with everything in them")

    def test_the_policy_holds(self):
        self.browser.open(self.folder)
        refused = self.browser.driver.execute_async_script("""
            const done = arguments[0], refused = [];
            document.addEventListener('securitypolicyviolation', (event) => refused.push(event.effectiveDirective));
            new Image().src = 'http://localhost:1/a.png';
            fetch('page/style.css').catch(() => {});
            const style = document.createElement('style'); style.textContent = 'p { color: red }'; document.head.append(style);
            const button = document.createElement('button'); try { button.setAttribute('onclick', 'hacked()'); } catch (e) { refused.push('attribute'); }
            try { document.body.innerHTML = '<p>'; } catch (e) { refused.push('markup'); }
            try { document.createElement('script').src = 'page/words.js'; } catch (e) { refused.push('script'); }
            const wanted = ['img-src', 'connect-src', 'style-src-elem', 'attribute', 'markup', 'script'];
            setTimeout(function wait() { wanted.every((one) => refused.includes(one)) ? done(refused) : setTimeout(wait, 20); }, 0);""")
        self.assertIn("require-trusted-types-for", refused)
        self.browser.driver.get("about:blank")
        self.assertTrue(self.browser.complaints(), "the browser says what it refused")
        self.assertEqual(["http://localhost:1/a.png"], self.browser.foreign_requests())
        self.browser.requests.clear()


class Absent(PageTest):
    """Sections without anything in them, and archives that are damaged."""

    @classmethod
    def make(cls):
        states = {"contacts": {"state": "left out", "count": 0}, "calendar": {"state": "failed", "count": 0, "reason": "The phone does not answer."},
                  "messages": {"state": "complete", "count": 0, "listed": 0}, "notes": {"state": "not supported", "count": 0}, "files": {"state": "complete", "count": 3}}
        archives.write_archive(programs, cls.folder, {"archive": {"version": 1, "phone": {"model": "Nokia 6230i"}, "runs": [{"started": "2026-11-23T18:00:00Z"}],
                                                                  "sections": states}, "messages": [], "notes": [], "losses": []})
        (cls.folder / "page/data/files.js").write_text("archiveData(\"files\",\n[{\"path\"")

    def tearDown(self):
        self.browser.complaints()  # files that are missing or damaged stand on the console, and on the page

    def test_sections_say_why(self):
        self.browser.open(self.folder)
        self.assertIn("interrupted", self.browser.find(".view-overview").text)
        for section, text in {"contacts": "--only", "calendar": "The phone does not answer.", "messages": "none on the phone", "notes": "does not hand out notes",
                              "files": "is damaged", "photos": "is damaged", "statistics": "neither messages nor contacts", "losses": "What was asked for is here"}.items():
            self.browser.go(section)
            self.assertIn(text, self.browser.find(f".view-{section}").text)
        (self.folder / "page/data/archive.js").unlink()
        self.browser.driver.get("about:blank")
        self.browser.driver.get((self.folder / "index.html").as_uri())
        self.assertIn("ovphone verify", self.browser.find(".empty").text)


class Large(PageTest):
    @classmethod
    def make(cls):
        cls.data = archives.large_archive(programs, cls.folder, contacts=10000, messages=50000, photos=5000)

    def nodes(self):
        return self.browser.run("return document.querySelectorAll('#main *').length")

    def test_only_what_is_near_is_in_the_document(self):
        self.browser.open(self.folder, "contacts")
        self.assertIn("1 of 10,000", self.search("contacts", "person 9999 "))
        self.search("contacts", "")
        self.browser.press(Keys.TAB, Keys.END)
        self.browser.wait(lambda: self.browser.focused().find_element("xpath", "..").get_attribute("aria-posinset") == "10000", "the last contact")
        self.browser.go("messages")
        self.assertIn("50,000 messages", self.found("messages"))
        self.assertIn("1 message found", self.search("messages", "number 49999 "))
        self.browser.click(".view-messages .row a")
        self.assertIn("number 49999 ", self.browser.find(".bubble.chosen").text)
        self.browser.go("photos")
        for _ in range(12):
            self.browser.press(Keys.TAB)
            if self.browser.run("return document.activeElement.matches('.photo button')"):
                break
        self.browser.press(Keys.END)
        self.browser.wait(lambda: self.browser.focused().find_element("xpath", "..").get_attribute("aria-posinset") == "5000", "the last photo")
        self.assertLess(self.nodes(), 12000)


if __name__ == "__main__":
    ovphone, write_page, phones = map(Path, sys.argv[1:4])
    programs = archives.Programs(ovphone, write_page, phones)
    unittest.main(argv=[sys.argv[0], *sys.argv[4:]], verbosity=2)
