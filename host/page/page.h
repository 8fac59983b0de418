// The page of an archive: what a person opens to look at a phone's contents with nothing but a browser.
//
// An archive gets the page's own files as they stand (`pageFiles`), and a data file for each section it
// shows (`pageData`), which the page loads when the section is opened. A section without a data file says
// so.
//
// What the data files hold. All JSON is valid UTF-8; what is absent is left out; texts are the phone's own,
// whatever they contain. Every item may have "onPhone": false and "goneSince" (ISO 8601, UTC: when a run
// first found it missing).
//
// "archive" an object, the same as phone.json:
//           {"version": 1,
//            "phone": {"model", "name", "serialNumber", "medium", "platform", ...},
//            "runs": [{"started", "finished"}, ...],
//            "sections": {"contacts": STATE, "calendar": STATE, "messages": STATE, "notes": STATE,
//                         "files": STATE}}
//           Times are ISO 8601 in UTC; "finished" is absent of a run that was interrupted. Further texts and
//           numbers of "phone" and of a run are shown under their names. STATE is
//           {"state": "complete" | "partial" | "left out" | "failed" | "not supported",
//            "count": N, "gone": N, "listed": N, "reason": TEXT}
//           "count": what the section's data file holds, "gone" of them no longer on the phone; "listed":
//           how many the phone named; "reason": a sentence for people, why not all is there.
// "contacts" an array; an object as of `ovphone contacts --format json`, and "picture": where the picture
//           lies in the archive.
// "calendar" an array; an object as of `ovphone calendar show --format json`, and "occurrences" of one that
//           repeats: an array with the start of each time it takes place, the first included, in the form of
//           "start", ascending and bounded.
// "messages" an array; an object as of `ovphone messages list --format json`, and "conversation": a text or
//           number that those with the same people have in common. Without it the page takes names and
//           addresses.
// "notes"   an array; an object as of `ovphone notes list --format json`.
// "files"   an array; an object as of `ovphone files ls -r --format json` (drives, folders and files), and of
//           each file "file": where it lies in the archive; absent of one that could not be saved, which has
//           "reason" then. "replaced": an array of earlier versions, {"file", "size", "changed"}.
// "losses"  an array, the same as losses.json: {"section": "contacts", "kind": "lost" | "unread", "item":
//           TEXT, "what": TEXT}. "lost": the phone had it and no format here holds it; "unread": it could
//           not be read. "item": whose loss it is, absent when it is the whole section's; "what": a sentence
//           for people. The page counts those of equal "what" together.
//
// Paths in the archive are relative to its folder, in its files' real names, with "/" between the parts and
// nothing escaped.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace ovno2::host {

// Both views are the program's own and live as long.
struct PageFile {
    std::string_view path;  // in the archive: "index.html", "page/style.css"
    std::string_view bytes;
};

// The page, its style and scripts, and the libraries it uses with their licences; the same in every archive.
std::span<const PageFile> pageFiles();

// Where the data file of this name lies in an archive: "page/data/contacts.js".
std::string pageDataPath(std::string_view name);

// The text of a data file. `json`: one whole value as described above.
std::string pageData(std::string_view name, std::string_view json);

// The same in pieces, for a value that is written as it comes: `begin`, the value, `end`.
struct PageDataFrame {
    std::string begin;
    std::string end;
};
PageDataFrame pageDataFrame(std::string_view name);

}  // namespace ovno2::host
