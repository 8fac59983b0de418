"""Archives to try the page on: of a phone, as the program reads it, and made up."""
import json
import os
import shutil
import subprocess
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


def large_archive(programs, folder, contacts, messages, photos):
    """Made up: many people, a few with most of the messages, pictures that are one file again and again."""
    folder = Path(folder)
    (folder / "files/E").mkdir(parents=True)
    picture = Path(programs.phones) / "demo/files/E/Images/Panorama.png"
    names = [f"Person {i} Élodie-{i * 7919 % 1000}" for i in range(contacts)]
    for i in range(photos):
        os.symlink(picture, folder / f"files/E/photo {i}.png")
    words = "see you at the station tomorrow morning bring cake and the blue umbrella please call when done".split()
    data = {
        "contacts": [{"firstName": f"Person {i} ", "lastName": names[i].split()[-1], "mobile": [f"+49 171 {i:07d}"], "email": [f"p{i}@example.org"],
                      "company": [f"Company {i % 100}"]} for i in range(contacts)],
        "messages": [{"time": f"{2004 + i * 10 // messages}-{i % 12 + 1:02d}-{i % 28 + 1:02d}T{i % 24:02d}:{i % 60:02d}:00",
                      "direction": ("received", "sent")[i % 2], "folder": "Inbox", "addresses": [f"+49171{i % 300:07d}"], "names": [names[i % 300]],
                      "text": f"number {i} " + " ".join(words[(i + k * (1 + i % 5)) % len(words)] for k in range(18)), "uid": f"{i:08X}"}
                     for i in range(messages)],
        "files": [{"path": f"E:/photo {i}.png", "name": f"photo {i}.png", "kind": "file", "size": 1000 + i, "file": f"files/E/photo {i}.png",
                   "changed": f"2008-{i % 12 + 1:02d}-{i % 28 + 1:02d}T10:00:00Z"} for i in range(photos)],
        "calendar": [{"type": "meeting", "start": f"{2004 + i % 9}-{i % 12 + 1:02d}-{i % 28 + 1:02d}T10:00:00", "summary": f"Meeting {i}", "calendar": "Work"}
                     for i in range(contacts)],
        "notes": [], "losses": [],
    }
    data["archive"] = {"version": 1, "phone": {"model": "Large"}, "runs": [{"started": "2026-11-23T18:00:00Z", "finished": "2026-11-23T18:00:02Z"}],
                       "sections": sections(contacts=contacts, messages=messages, files=photos, calendar=contacts, notes=0)}
    write_archive(programs, folder, data)
    return data
