#pragma once

#include <stdlib.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace fakes {

/// An empty folder in which the program works, so that its files have short names. It goes with
/// the object.
class Folder {
public:
    Folder() {
        if (!mkdtemp(mPath.data())) throw std::runtime_error("no temporary folder");
        std::filesystem::current_path(mPath);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder() {
        std::filesystem::current_path("/");
        std::filesystem::remove_all(mPath);
    }

    std::ptrdiff_t FileCount() const {
        return std::distance(std::filesystem::directory_iterator(mPath), {});
    }

private:
    std::string mPath = "/tmp/accredit-test-XXXXXX";
};

/// All that a file holds; an empty text if it cannot be read.
inline std::string ReadFile(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

inline void WriteFile(const std::string& path, std::string_view text) {
    std::ofstream(path, std::ios::binary) << text;
}

}  // namespace fakes
