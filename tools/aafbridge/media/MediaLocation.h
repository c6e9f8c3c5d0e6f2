#pragma once
// Where linked media is on this machine: a locator's URL or path turned into a local
// path, looked for as written and then beside the AAF file.
#include <string>

// "file:///c%3a/Media/a.wav" -> "c:/Media/a.wav", "file://host/share/a.wav" ->
// "//host/share/a.wav", "file:///Volumes/A%20B/a.wav" -> "/Volumes/A B/a.wav"; other text as is.
std::string pathFromLocator(const std::string& locator);

struct MediaLocation {
    std::string path;   // the file found, or empty
    std::string where;  // "as written", "relative to the AAF", "beside the AAF", or "missing"
};

// Looks for the locator's file as written (relative paths against the AAF's folder), then
// for a file of the same name in the AAF's folder.
MediaLocation locateMedia(const std::string& locator, const std::string& aafPath);
