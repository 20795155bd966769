/// Visibility of what the module exports.
#pragma once

#if defined(KAVRA_OIIO_BUILD)
#define KAVRA_OIIO_API __attribute__((visibility("default")))
#else
#define KAVRA_OIIO_API
#endif
