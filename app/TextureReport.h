/// What is told of textures.
#pragma once

#include "Description.h"
#include "TextureMaking.h"

#include <string>

namespace Kavra::App {

/// "kBC7Srgb, 512 x 256, 10 levels, 174,776 bytes" and the like.
std::string ShapeText(const Devices::TextureShape& shape);
Json ShapeJson(const Devices::TextureShape& shape);

/// "R 45.12 dB, G 46.01 dB, B 44.90 dB".
std::string ErrorText(const TextureError& error);
Json ErrorJson(const TextureError& error);

/// Every level, face and element of a texture file, with its place in the order of DDS files: for people, a line each.
std::string InspectionText(const std::string& file, const StoredTexture& stored);
Json InspectionJson(const std::string& file, const StoredTexture& stored);

}  // namespace Kavra::App
