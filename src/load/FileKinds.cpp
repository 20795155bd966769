#include "load/FileKinds.h"

#include <OpenImageIO/imageio.h>
#include <OpenImageIO/strutil.h>

#include <array>
#include <set>
#include <span>
#include <string>
#include <string_view>

namespace Kavra::Devices {

namespace {

/// What is read without the library, or where it does not open a file.
constexpr auto kOwnReadable =
    std::to_array<std::string_view>({".bil", ".cal", ".dds", ".exr", ".flc", ".fli", ".pct", ".pcx", ".pict", ".rlc"});
constexpr auto kOwnWritable = std::to_array<std::string_view>({".dds"});

/// No files: a picture of any name, and a window of text.
bool IsNoFile(std::string_view format) {
    return format == "null" || format == "term";
}

/// The library's lists are "name,name" and "name:extension,extension;name:extension".
std::string Extensions(const char* formatList, std::span<const std::string_view> own) {
    const std::string listed(OIIO::get_string_attribute(formatList));
    const std::string extensions(OIIO::get_string_attribute("extension_list"));
    const auto names = OIIO::Strutil::splitsv(listed, ",");
    const std::set<std::string_view> formats(names.begin(), names.end());
    std::set<std::string> found(own.begin(), own.end());
    for (const auto& entry : OIIO::Strutil::splitsv(extensions, ";")) {
        const auto parts = OIIO::Strutil::splitsv(entry, ":");
        if (parts.size() != 2 || IsNoFile(parts[0]) || !formats.contains(parts[0])) continue;
        for (const auto& word : OIIO::Strutil::splitsv(parts[1], ","))
            found.insert("." + OIIO::Strutil::lower(word));
    }
    std::string text;
    for (const std::string& extension : found)
        text += (text.empty() ? "" : " ") + extension;
    return text;
}

}  // namespace

const char* ReadableExtensions() {
    static const std::string text = Extensions("input_format_list", kOwnReadable);
    return text.c_str();
}

const char* WritableExtensions() {
    static const std::string text = Extensions("output_format_list", kOwnWritable);
    return text.c_str();
}

}  // namespace Kavra::Devices
