#include "readers/pcx/DcxPages.h"

#include "readers/pcx/PcxHeader.h"

#include <algorithm>
#include <cstddef>
#include <set>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::Failure;
using Common::Result;

namespace {

constexpr std::uint32_t kDcx = 0x3ADE68B1;
constexpr std::size_t kMaxPages = 1023;

Result<std::uint32_t> ReadKind(ByteSource& source) {
    return source.Seek(0).and_then([&] { return source.Little<std::uint32_t>(); });
}

bool IsPage(ByteSource& source, std::uint64_t start) {
    return OpenDcxPage(source, {.start = start, .bytes = source.Size() - start})
        .and_then([](ByteSource&& file) { return ReadCommonPcxHeader(file); })
        .has_value();
}

/// Where pages begin, each once.
std::vector<std::uint64_t> ReadStarts(ByteSource& source) {
    ByteSource list = source.Again();
    std::vector<std::uint64_t> starts;
    std::set<std::uint64_t> seen;
    (void)list.Seek(sizeof kDcx);
    for (std::size_t i = 0; i < kMaxPages; ++i) {
        const Result<std::uint32_t> start = list.Little<std::uint32_t>();
        if (!start || *start == 0) break;
        if (*start < source.Size() && seen.insert(*start).second && IsPage(source, *start)) starts.push_back(*start);
    }
    return starts;
}

}  // namespace

bool IsDcx(ByteSource& source) {
    return ReadKind(source) == kDcx;
}

Result<std::vector<DcxPage>> FindDcxPages(ByteSource& source) {
    if (!IsDcx(source)) return std::unexpected(Failure::kMalformed);
    const std::vector<std::uint64_t> starts = ReadStarts(source);
    std::set<std::uint64_t> ends(starts.begin(), starts.end());
    ends.insert(source.Size());
    std::vector<DcxPage> pages;
    pages.reserve(starts.size());
    for (const std::uint64_t start : starts)
        pages.push_back({.start = start, .bytes = *ends.upper_bound(start) - start});
    if (pages.empty()) return std::unexpected(Failure::kMalformed);
    return pages;
}

Result<ByteSource> OpenDcxPage(ByteSource& source, const DcxPage& page) {
    return source.Seek(page.start).and_then([&] { return source.Slice(page.bytes); });
}

}  // namespace Kavra::Devices
