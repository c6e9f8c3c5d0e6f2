#pragma once
// Directory entry names: UTF-16 on disk, UTF-8 in memory, and the sibling order.
#include <string>

namespace aafkit::cfb {

// False on malformed UTF-8.
bool utf8ToUtf16(const std::string& in, std::u16string& out);
// Unpaired surrogates become U+FFFD.
std::string utf16ToUtf8(const std::u16string& in);

// Siblings in a storage are ordered by name length, then by upper-cased code
// units. The key is the length followed by the upper-cased name, so keys
// compare with operator< in that order and are equal for names that clash.
std::string siblingKey(const std::u16string& name);

}  // namespace aafkit::cfb
