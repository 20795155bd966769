/// Visibility of what the host object library offers.
#pragma once

#if defined(KAVRA_OBJECTS_BUILD)
#define KAVRA_OBJECTS_API __attribute__((visibility("default")))
#else
#define KAVRA_OBJECTS_API
#endif
