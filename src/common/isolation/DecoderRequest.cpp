#include "common/isolation/DecoderRequest.h"

#include "common/isolation/Fields.h"

namespace Kavra::Common {

std::vector<unsigned char> ToBytes(const DecoderRequest& request) {
    FieldWriter out;
    out.Add(request.wish);
    out.Add(static_cast<std::uint8_t>(request.choosesChannels));
    out.AddText(request.channels);
    out.Add(static_cast<std::uint32_t>(request.names.size()));
    for (const std::string& name : request.names)
        out.AddText(name);
    return out.Bytes();
}

bool FromBytes(std::span<const unsigned char> bytes, DecoderRequest& request) {
    FieldReader in(bytes);
    request.wish = in.Take<DecoderWish>();
    request.choosesChannels = in.Take<std::uint8_t>() != 0;
    request.channels = in.TakeText();
    const auto names = in.Take<std::uint32_t>();
    for (std::uint32_t i = 0; i < names && in.IsWhole(); ++i)
        request.names.push_back(in.TakeText());
    return in.IsAtEnd() && !request.names.empty();
}

}  // namespace Kavra::Common
