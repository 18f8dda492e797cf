#pragma once

#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace fakes {

/// All that a file holds; an empty text if it cannot be read.
inline std::string ReadFile(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

/// A file with this content, deleted with the object.
class TempFile {
public:
    explicit TempFile(std::string_view content) {
        const int descriptor = mkstemp(mPath.data());
        if (descriptor < 0) throw std::runtime_error("no temporary file");
        close(descriptor);
        Write(content);
    }
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;
    ~TempFile() { unlink(mPath.c_str()); }

    void Write(std::string_view content) const {
        std::ofstream(mPath, std::ios::binary | std::ios::trunc) << content;
    }
    std::string Read() const { return ReadFile(mPath); }
    const std::string& Path() const { return mPath; }

private:
    std::string mPath = "/tmp/accredit-test-XXXXXX";
};

}  // namespace fakes
