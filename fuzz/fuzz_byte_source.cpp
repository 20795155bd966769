// The byte source: the same walk over a file and over memory must see the same bytes as the input itself.

#include "FuzzFile.h"
#include "common/ByteSource.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace {

using namespace Kavra;
using Common::ByteSource;

void Require(bool holds) {
    if (!holds) std::abort();
}

/// One source with the bytes that it must show.
struct Walked {
    ByteSource source;
    std::span<const unsigned char> bytes;

    std::span<const unsigned char> Rest() const { return bytes.subspan(static_cast<std::size_t>(source.Position())); }
};

void ReadSome(Walked& walked, std::size_t count) {
    const auto expected = walked.Rest().first(std::min(count, walked.Rest().size()));
    std::vector<unsigned char> out(count);
    Require(walked.source.ReadSome(out) == expected.size());
    Require(std::ranges::equal(expected, std::span(out).first(expected.size())));
}

void ReadWhole(Walked& walked, std::size_t count) {
    const auto rest = walked.Rest();
    std::vector<unsigned char> out(count);
    const bool fits = count <= rest.size();
    Require(walked.source.Read(out).has_value() == fits);
    Require(walked.Rest().size() == rest.size() - (fits ? count : 0));
    Require(!fits || std::ranges::equal(out, rest.first(count)));
}

void ReadNumber(Walked& walked) {
    const auto rest = walked.Rest();
    const auto number = walked.source.Big<std::uint16_t>();
    Require(number.has_value() == (rest.size() >= 2));
    Require(!number || *number == (rest[0] << 8 | rest[1]));
}

void Peek(Walked& walked) {
    const auto window = walked.source.Peek();
    Require(window.empty() == walked.Rest().empty());
    Require(std::ranges::equal(window, walked.Rest().first(window.size())));
}

/// Goes on in a part of the source.
void Slice(Walked& walked, std::size_t count) {
    const auto rest = walked.Rest();
    auto slice = walked.source.Slice(count);
    Require(slice.has_value() == (count <= rest.size()));
    if (slice) walked = {std::move(*slice), rest.first(count)};
}

/// One step: which, and a number that may be far too large for it.
void Step(Walked& walked, unsigned step, std::uint64_t number) {
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(number, 100'000));
    const std::uint64_t position = walked.source.Position();
    switch (step % 8) {
        case 0:
            return ReadSome(walked, count);
        case 1:
            return ReadWhole(walked, count);
        case 2:
            return ReadNumber(walked);
        case 3:
            return Peek(walked);
        case 4:
            return Slice(walked, count);
        case 5:
            return Require(walked.source.Skip(number).has_value() == (number <= walked.bytes.size() - position));
        default:
            return Require(walked.source.Seek(number).has_value() == (number <= walked.bytes.size()));
    }
}

void Walk(Walked walked, std::span<const unsigned char> steps) {
    constexpr std::size_t kScale[] = {1, 16, 257, 4096};
    for (; steps.size() >= 2; steps = steps.subspan(2)) {
        const std::uint64_t number =
            steps[0] == 0xFF && steps[1] > 0xF0 ? ~std::uint64_t{steps[1]} : steps[1] * kScale[steps[0] >> 3 & 3];
        Step(walked, steps[0], number);
        Require(walked.source.Size() == walked.bytes.size());
        Require(walked.source.Position() + walked.source.Remaining() == walked.source.Size());
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span steps(data, std::min<std::size_t>(size, 200));
    // Long enough for several buffers, whatever the input's length.
    std::vector<unsigned char> bytes;
    while (size > 0 && bytes.size() < 50'000)
        bytes.insert(bytes.end(), data, data + size);

    Walk({ByteSource(std::span<const unsigned char>(bytes)), bytes}, steps);
    const Fuzz::FuzzFile file(bytes, ".dat");
    auto source = ByteSource::Open(file.Name());
    Require(source.has_value());
    Walk({std::move(*source), bytes}, steps);
    return 0;
}
