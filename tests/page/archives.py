"""Archives to try the page on: of a phone, as the program reads it, and made up."""
import json
import os
import shutil
import subprocess
import tempfile
from pathlib import Path


class Programs:
    """What the build has made: `ovphone`, `write_page`, and the folder of phones."""

    def __init__(self, ovphone, write_page, phones):
        self.ovphone, self.write_page, self.phones = ovphone, write_page, phones

    def read(self, home, *arguments):
        environment = {**os.environ, "OVNO2_HOME": str(home), "OVNO2_PHONES": str(self.phones)}
        run = subprocess.run([self.ovphone, *arguments], env=environment, capture_output=True, check=False)
        return run.stdout.decode()


def write_archive(programs, folder, data):
    """An archive with the data files that `data` has, by name."""
    folder = Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    for name, value in data.items():
        (folder / (name + ".json")).write_text(json.dumps(value, ensure_ascii=False), encoding="utf-8", errors="surrogatepass")
    subprocess.run([programs.write_page, folder, *data], check=True)


def sections(**counts):
    return {name: {"state": "complete", "count": count, "gone": 0, "listed": count} for name, count in counts.items()}


def demo_archive(programs, folder):
    """The demo phone's contents."""
    folder = Path(folder)
    home = folder / "home"
    phone = ("--phone", "Nokia N95")
    read = lambda *arguments: json.loads(programs.read(home, *arguments, *phone, "--format", "json"))
    contacts = json.loads(programs.read(home, "contacts", *phone, "--format", "json", "--pictures", str(folder / "contacts/pictures")))
    for contact in contacts:
        if "picture" in contact:
            contact["picture"] = ["contacts/pictures/" + Path(path).name for path in contact["picture"]]
    calendar = read("calendar", "show")
    times = [one for years in (("1900-01-01", "1969-12-31"), ("1970-01-01", "2029-12-31"))
             for one in read("calendar", "list", "--from", years[0], "--to", years[1])]
    for entry in calendar:
        if "rule" in entry:
            entry["occurrences"] = [one["date"] for one in times if one["uid"] == entry["uid"]]
    programs.read(home, "files", "get", "-r", "/", str(folder / "files"), *phone)
    files = read("files", "ls", "-r", "/")
    for entry in files:
        if entry["kind"] == "file":
            entry["file"] = "files/" + entry["path"].replace(":", "", 1)
    data = {"contacts": contacts, "calendar": calendar, "messages": read("messages", "list"), "notes": read("notes", "list"),
            "files": files, "losses": []}
    counts = {name: len(value) for name, value in data.items() if name != "losses"}
    counts["files"] = sum(entry["kind"] == "file" for entry in files)
    data["archive"] = {
        "version": 1,
        "phone": {"model": "Nokia N95", "name": "Anna's phone", "serialNumber": "356300010000017", "medium": "USB", "platform": "S60 3rd"},
        "runs": [{"started": "2026-11-23T18:00:00Z", "finished": "2026-11-23T18:00:02Z"}],
        "sections": sections(**counts),
    }
    write_archive(programs, folder, data)
    shutil.rmtree(home, ignore_errors=True)
    return data
