#include <kavra/oiio/OIIOImageHandler.h>

namespace Kavra::Devices {

namespace {

void SetLibraryAttribute(const char* name, int value) {
    (void)OIIO::attribute(name, OIIO::TypeInt, &value);
}

}  // namespace

static_assert(sizeof(OIIOImageHandler) == 2 * sizeof(void*), "a handler is its two interface views and nothing else");

int OIIOImageHandler::mNetObjectCount = 0;

OIIOImageHandler::OIIOImageHandler() {
    SetLibraryAttribute("openexr:core", 0);
    SetLibraryAttribute("oiio:print_uncaught_errors", 0);
    SetLibraryAttribute("imagebuf:print_uncaught_errors", 0);
}

OIIOImageHandler::OIIOImageHandler(const OIIOImageHandler&) = default;
OIIOImageHandler& OIIOImageHandler::operator=(const OIIOImageHandler&) = default;
OIIOImageHandler::~OIIOImageHandler() = default;

IClone* OIIOImageHandler::Clone() {
    return this;
}

int OIIOImageHandler::CurObjectCount() const {
    return NetObjectCount();
}

}  // namespace Kavra::Devices
