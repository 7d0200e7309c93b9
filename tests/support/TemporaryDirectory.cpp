#include "support/TemporaryDirectory.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <stdlib.h>

namespace fs = std::filesystem;

static std::string makeDirectoryIn(const fs::path &parent) {
    std::string path = fs::canonical(parent) / "qb-test-XXXXXX";
    if (!::mkdtemp(path.data()))
        throw std::runtime_error("no temporary directory can be made: " + path);
    return path;
}

TemporaryDirectory::TemporaryDirectory() : made_(makeDirectoryIn(fs::temp_directory_path())), path_(made_) {}

TemporaryDirectory::TemporaryDirectory(std::string_view name)
    : made_(makeDirectoryIn(fs::is_directory("/dev/shm") ? "/dev/shm" : fs::temp_directory_path())),
      path_(made_ + "/" + std::string(name)) {
    fs::create_directory(path_);
}

TemporaryDirectory::~TemporaryDirectory() {
    std::error_code error; // a test that took away its own rights has failed already
    fs::remove_all(made_, error);
}

void TemporaryDirectory::write(std::string_view name, std::string_view bytes) const {
    const fs::path file = *this / name;
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << bytes;
}

void TemporaryDirectory::makeDirectory(std::string_view name) const {
    fs::create_directories(*this / name);
}

void TemporaryDirectory::link(std::string_view text, std::string_view name) const {
    const fs::path path = *this / name;
    fs::create_directories(path.parent_path());
    fs::create_symlink(text, path);
}

std::string TemporaryDirectory::read(std::string_view name) const {
    std::ifstream file(*this / name, std::ios::binary);
    if (!file)
        return "(missing)";
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

bool TemporaryDirectory::has(std::string_view name) const {
    std::error_code error;
    return fs::symlink_status(*this / name, error).type() != fs::file_type::not_found;
}

std::vector<std::string> TemporaryDirectory::names(std::string_view name) const {
    std::vector<std::string> names;
    for (const fs::directory_entry &entry : fs::directory_iterator(*this / name))
        names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}
