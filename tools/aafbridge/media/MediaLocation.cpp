#include "media/MediaLocation.h"

#include <cctype>
#include <filesystem>

namespace fs = std::filesystem;

namespace {

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

std::string percentDecoded(const std::string& text) {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size() && hexValue(text[i + 1]) >= 0 && hexValue(text[i + 2]) >= 0) {
            out += char(hexValue(text[i + 1]) * 16 + hexValue(text[i + 2]));
            i += 2;
        } else {
            out += text[i];
        }
    }
    return out;
}

bool isRegularFile(const fs::path& path) {
    std::error_code error;
    return fs::is_regular_file(path, error);
}

// The last component of a path written on any system.
std::string fileName(const std::string& path) {
    const size_t slash = path.find_last_of("/\\");
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

}  // namespace

std::string pathFromLocator(const std::string& locator) {
    const std::string scheme = "file://";
    if (locator.compare(0, scheme.size(), scheme) != 0) return locator;
    std::string path = percentDecoded(locator.substr(scheme.size()));
    if (path.empty() || path[0] != '/') return "//" + path;  // a host name: a network share
    // "/c:/..." names a Windows drive.
    if (path.size() > 2 && path[2] == ':' && std::isalpha(static_cast<unsigned char>(path[1]))) return path.substr(1);
    return path;
}

MediaLocation locateMedia(const std::string& locator, const std::string& aafPath) {
    const std::string written = pathFromLocator(locator);
    if (written.empty()) return {"", "missing"};
    const fs::path folder = fs::path(aafPath).parent_path();
    const fs::path asWritten(written);
    if (asWritten.is_absolute()) {
        if (isRegularFile(asWritten)) return {asWritten.string(), "as written"};
    } else if (isRegularFile(folder / asWritten)) {
        return {(folder / asWritten).string(), "relative to the AAF"};
    }
    const fs::path beside = folder / fileName(written);
    if (isRegularFile(beside)) return {beside.string(), "beside the AAF"};
    return {"", "missing"};
}
