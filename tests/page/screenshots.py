"""screenshots.py OVPHONE WRITE_PAGE PHONES FOLDER: the pictures of docs/images, made anew by hand when the page looks different."""
import sys
import tempfile
from pathlib import Path

import archives
from browser import Browser


def main(ovphone, write_page, phones, folder):
    with tempfile.TemporaryDirectory() as place:
        archive = Path(place) / "archive"
        archives.demo_archive(archives.Programs(ovphone, write_page, Path(phones)), archive)
        browser = Browser(1000, 640)
        for name, address, dark in (("contacts", "contacts/0", False), ("messages", "messages/6", True), ("calendar", "calendar", False),
                                    ("photos", "photos", False)):
            browser.set_dark(dark)
            browser.open(archive, address)
            browser.wait(lambda: browser.run("return [...document.images].every((image) => image.complete)"), "pictures")
            browser.screenshot(Path(folder) / f"archive-{name}.png")
        browser.resize(360, 640)
        browser.set_dark(False)
        browser.open(archive, "messages/6")
        browser.screenshot(Path(folder) / "archive-small.png")
        browser.close()


if __name__ == "__main__":
    main(*sys.argv[1:5])  # then: pngquant --ext .png --force 128 FOLDER/*.png
