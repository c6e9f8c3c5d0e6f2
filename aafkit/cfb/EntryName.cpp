#include "aafkit/cfb/EntryName.h"

#include <algorithm>

namespace aafkit::cfb {
namespace {

bool isHighSurrogate(char32_t u) { return u >= 0xD800 && u <= 0xDBFF; }
bool isLowSurrogate(char32_t u) { return u >= 0xDC00 && u <= 0xDFFF; }

// Decodes one code point at `pos`, advancing it; false on malformed input.
bool decodeUtf8(const std::string& in, size_t& pos, char32_t& cp) {
    const auto lead = static_cast<unsigned char>(in[pos]);
    if (lead < 0x80) {
        cp = lead;
        ++pos;
        return true;
    }
    const size_t extra = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
    if (lead < 0xC2 || lead > 0xF4 || in.size() - pos <= extra) return false;
    cp = lead & (0x3F >> extra);
    for (size_t i = 1; i <= extra; ++i) {
        const auto next = static_cast<unsigned char>(in[pos + i]);
        if ((next & 0xC0) != 0x80) return false;
        cp = (cp << 6) | (next & 0x3F);
    }
    static const char32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};
    if (cp < kSmallest[extra] || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return false;
    pos += extra + 1;
    return true;
}

void encodeUtf8(char32_t cp, std::string& out) {
    if (cp < 0x80) {
        out += char(cp);
    } else if (cp < 0x800) {
        out += char(0xC0 | (cp >> 6));
        out += char(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        out += char(0xE0 | (cp >> 12));
        out += char(0x80 | ((cp >> 6) & 0x3F));
        out += char(0x80 | (cp & 0x3F));
    } else {
        out += char(0xF0 | (cp >> 18));
        out += char(0x80 | ((cp >> 12) & 0x3F));
        out += char(0x80 | ((cp >> 6) & 0x3F));
        out += char(0x80 | (cp & 0x3F));
    }
}

// ASCII and Latin-1 letters; AAF names are ASCII in practice.
char16_t upperCase(char16_t c) {
    const bool asciiLower = c >= u'a' && c <= u'z';
    const bool latin1Lower = c >= 0xE0 && c <= 0xFE && c != 0xF7;
    return asciiLower || latin1Lower ? char16_t(c - 0x20) : c;
}

}  // namespace

bool utf8ToUtf16(const std::string& in, std::u16string& out) {
    if (std::all_of(in.begin(), in.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; })) {
        out.assign(in.begin(), in.end());  // ASCII, the usual case
        return true;
    }
    out.clear();
    for (size_t pos = 0; pos < in.size();) {
        char32_t cp = 0;
        if (!decodeUtf8(in, pos, cp)) return false;
        if (cp < 0x10000) {
            out += char16_t(cp);
        } else {
            out += char16_t(0xD800 + ((cp - 0x10000) >> 10));
            out += char16_t(0xDC00 + ((cp - 0x10000) & 0x3FF));
        }
    }
    return true;
}

std::string utf16ToUtf8(const std::u16string& in) {
    std::string out;
    for (size_t i = 0; i < in.size(); ++i) {
        char32_t u = in[i];
        if (isHighSurrogate(u) && i + 1 < in.size() && isLowSurrogate(in[i + 1])) {
            u = 0x10000 + ((u - 0xD800) << 10) + (in[++i] - 0xDC00);
        } else if (isHighSurrogate(u) || isLowSurrogate(u)) {
            u = 0xFFFD;
        }
        encodeUtf8(u, out);
    }
    return out;
}

std::string siblingKey(const std::u16string& name) {
    // Big-endian units after a big-endian length: byte order is sibling order, so keys
    // compare with memcmp.
    std::string key(2 * name.size() + 2, '\0');
    const auto put = [&key](size_t at, char16_t u) {
        key[at] = char(u >> 8);
        key[at + 1] = char(u & 0xff);
    };
    put(0, char16_t(name.size()));
    for (size_t i = 0; i < name.size(); ++i) put(2 * i + 2, upperCase(name[i]));
    return key;
}

}  // namespace aafkit::cfb
