"""Archives to try the page on: of a phone, as the program reads it, and made up."""
import json
import os
import subprocess
import tempfile
from pathlib import Path


class Programs:
    """What the build has made: `ovphone`, `write_page`, and the folder of phones."""

    def __init__(self, ovphone, write_page, phones):
        self.ovphone, self.write_page, self.phones = ovphone, write_page, phones


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
    """The demo phone as `ovphone archive` saves it; gives what the data files hold."""
    with tempfile.TemporaryDirectory() as home:
        environment = {**os.environ, "OVNO2_HOME": home, "OVNO2_PHONES": str(programs.phones)}
        subprocess.run([programs.ovphone, "archive", folder, "--phone", "Nokia N95"], env=environment, capture_output=True, check=True)
    data = {}
    for file in Path(folder).glob("page/data/*.js"):
        _, text = file.read_text(encoding="utf-8").split(",", 1)
        data[file.stem] = json.loads(text[:text.rindex(")")])
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
