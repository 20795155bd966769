#include "formats/Attributes.h"

namespace Kavra::Devices {

namespace {

bool IsInteger(OIIO::TypeDesc type) {
    if (type.aggregate != OIIO::TypeDesc::SCALAR || type.arraylen != 0) return false;
    switch (type.basetype) {
        case OIIO::TypeDesc::UINT8:
        case OIIO::TypeDesc::INT8:
        case OIIO::TypeDesc::UINT16:
        case OIIO::TypeDesc::INT16:
        case OIIO::TypeDesc::UINT32:
        case OIIO::TypeDesc::INT32:
        case OIIO::TypeDesc::UINT64:
        case OIIO::TypeDesc::INT64:
            return true;
        default:
            return false;
    }
}

}  // namespace

std::optional<int> IntegerAttribute(const OIIO::ImageSpec& spec, const char* name) {
    const OIIO::ParamValue* attribute = spec.find_attribute(name);
    if (attribute == nullptr || !IsInteger(attribute->type())) return std::nullopt;
    return attribute->get_int();
}

std::optional<float> FloatAttribute(const OIIO::ImageSpec& spec, const char* name) {
    const OIIO::ParamValue* attribute = spec.find_attribute(name, OIIO::TypeFloat);
    if (attribute == nullptr) return std::nullopt;
    return attribute->get_float();
}

std::optional<OIIO::string_view> TextAttribute(const OIIO::ImageSpec& spec, const char* name) {
    const OIIO::ParamValue* attribute = spec.find_attribute(name, OIIO::TypeString);
    if (attribute == nullptr) return std::nullopt;
    return attribute->get_ustring();
}

bool IsGreyTiff(const OIIO::ImageSpec& spec) {
    const auto photometric = IntegerAttribute(spec, "tiff:PhotometricInterpretation");
    return photometric == 0 || photometric == 1;
}

}  // namespace Kavra::Devices
