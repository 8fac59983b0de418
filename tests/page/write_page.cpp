// write_page DIR [NAME...]: writes the page of an archive into DIR, and for each NAME a data file with the
// JSON of DIR/NAME.json.
#include <filesystem>
#include <fstream>
#include <iterator>

#include "host/page/page.h"

namespace {

void write(const std::filesystem::path& file, std::string_view bytes) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream stream(file, std::ios::binary);
    stream.exceptions(std::ios::failbit | std::ios::badbit);
    stream << bytes;
}

}  // namespace

int main(int count, char** arguments) {
    using namespace ovno2::host;
    if (count < 2) return 2;
    const std::filesystem::path folder = arguments[1];
    for (const PageFile& file : pageFiles())
        write(folder / file.path, file.bytes);
    for (int i = 2; i < count; ++i) {
        const std::string name = arguments[i];
        std::ifstream json(folder / (name + ".json"), std::ios::binary);
        json.exceptions(std::ios::badbit | std::ios::failbit);
        const std::string text{std::istreambuf_iterator<char>(json), {}};
        write(folder / pageDataPath(name), pageData(name, text));
    }
}
