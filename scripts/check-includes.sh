#!/bin/bash
# check-includes.sh: folders are floors. In src, simulator and host, a folder may include only headers of itself and of
# the folders that stand above it in the list; names file and line of every include that goes the wrong way.
#
# The order is read from one place each: the add_subdirectory lines of src/CMakeLists.txt, simulator/CMakeLists.txt and
# host/CMakeLists.txt, from the ground up. The simulator and the host stand beside each other: the simulator may use
# what the library's records need, the host what its door to the driver shows.
set -eu

cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."

# The folders of $1 from the ground up, one a line.
floors() { sed -n 's/^ *add_subdirectory(\([a-z_0-9]*\)).*/\1/p' "$1/CMakeLists.txt"; }

find src simulator host \( -name '*.cpp' -o -name '*.h' \) -exec grep -Hn '^ *# *include "' {} + |
    awk -F: -v src="$(floors src | tr '\n' ' ')" -v simulator="$(floors simulator | tr '\n' ' ')" \
        -v host="$(floors host | tr '\n' ' ')" '
    function order(house, list,    names, count, i) {
        count = split(list, names, " ")
        for (i = 1; i <= count; ++i) floor[house "/" names[i]] = i
    }
    BEGIN {
        order("src", src); order("simulator", simulator); order("host", host)
        floor["src/platform_native"] = floor["src/platform"]  # the header folder of either implementation
    }
    # The house and floor of a path in it; a path without a house stands in src.
    function place(path,    parts, count) {
        count = split(path, parts, "/")
        if (parts[1] == "src" || parts[1] == "simulator" || parts[1] == "host") {
            house = parts[1]
            room = count > 2 ? parts[2] : ""
        } else {
            house = "src"
            room = parts[1]
        }
    }
    {
        file = $1
        included = $0
        sub(/^[^"]*"/, "", included); sub(/".*/, "", included)
        place(file); from = house; from_room = room
        place(included); to = house; to_room = room
        wrong = ""
        if (from == to) {
            # What lies in the house itself, beside its rooms, stands on top of all of them.
            if (to_room == "" && from_room != "") wrong = "a room uses what stands above all rooms"
            else if (to_room != "" && !((to "/" to_room) in floor)) wrong = to "/" to_room " is no room that " to "/CMakeLists.txt lists"
            else if (from_room != "" && !((from "/" from_room) in floor)) wrong = from "/" from_room " is no room that " from "/CMakeLists.txt lists"
            else if (from_room != "" && floor[from "/" from_room] < floor[to "/" to_room]) wrong = from_room " stands below " to_room
        } else if (from == "src") {
            wrong = "the module uses nothing of " to
        } else if (from == "simulator" && to == "host" || from == "host" && to == "simulator") {
            wrong = from " uses nothing of " to
        }
        if (wrong != "") { print "check-includes: " file ":" $2 ": \"" included "\": " wrong; bad = 1 }
    }
    END { exit bad }' >&2
