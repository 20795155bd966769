# One set of flags for all that is built here: kavra_flags.
add_library(kavra_flags INTERFACE)
target_compile_features(kavra_flags INTERFACE cxx_std_23)
target_compile_options(kavra_flags INTERFACE -fPIC -Wall -Wextra -Wpedantic -Wno-psabi
  # The numeric rules fix every rounding: no fused multiply-add may change one.
  -ffp-contract=off
  # What is built does not tell where.
  -ffile-prefix-map=${PROJECT_SOURCE_DIR}=. -ffile-prefix-map=${PROJECT_BINARY_DIR}=build)
target_include_directories(kavra_flags INTERFACE ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

# Sanitized code at -O1: it finds the same and builds in half the time.
set(CMAKE_CXX_FLAGS_SANITIZE "-O1 -g1")

if(KAVRA_SANITIZE)
  set(sanitize -fsanitize=${KAVRA_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_compile_options(${sanitize})
  add_link_options(${sanitize})
endif()
if(KAVRA_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
