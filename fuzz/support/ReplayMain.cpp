// Runs a fuzz target over files that are already there: the seeds, or an input that once failed.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace {
namespace fs = std::filesystem;

// Named before it runs, so that a crash tells which input it was.
bool replayFile(const fs::path &path) {
    std::printf("%s\n", path.c_str());
    std::fflush(stdout);
    std::ifstream file(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file.good() && !file.eof())
        return false;
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size());
    return true;
}

// Returns how many files ran, or -1 when one could not be read.
int replay(const fs::path &path) {
    if (!fs::is_directory(path))
        return replayFile(path) ? 1 : -1;
    int count = 0;
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(path)) {
        if (!entry.is_regular_file())
            continue;
        if (!replayFile(entry.path()))
            return -1;
        ++count;
    }
    return count;
}
} // namespace

int main(int argumentCount, char **arguments) {
    for (int i = 1; i < argumentCount; ++i) {
        std::error_code error;
        const int count = fs::exists(arguments[i], error) ? replay(arguments[i]) : 0;
        if (count <= 0) {
            std::fprintf(stderr, "%s: no input could be read\n", arguments[i]);
            return 1;
        }
    }
    return argumentCount > 1 ? 0 : 1;
}
