#include "host/page/page.h"

#include <utility>

namespace ovno2::host {

// `pageFiles` is generated from assets/ and the libraries; see CMakeLists.txt.

std::string pageDataPath(std::string_view name) {
    return "page/data/" + std::string(name) + ".js";
}

// A page that was opened from disk may load scripts, but read no other file. So data comes as a script that
// hands it over; JSON is a value of the language.
PageDataFrame pageDataFrame(std::string_view name) {
    return {"archiveData(\"" + std::string(name) + "\",\n", ");\n"};
}

std::string pageData(std::string_view name, std::string_view json) {
    PageDataFrame frame = pageDataFrame(name);
    return std::move(frame.begin.append(json).append(frame.end));
}

}  // namespace ovno2::host
