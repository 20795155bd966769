/// Pixel formats.
#pragma once

namespace Kavra::Devices {

/// Pixel formats of the host. Names give the channels in memory order, first byte first; multi-byte elements are
/// little-endian. F is floating point (16 bits: IEEE half), BC are 4 x 4 block-compressed formats
/// (https://learn.microsoft.com/windows/win32/direct3d11/texture-block-compression-in-direct3d-11).
/// Any other int is a value too: functions that take a format treat what they do not know as unknown.
enum EFormat : int {
    kUnknown = 0,

    kBC1 = 6,
    kBC1Srgb = 7,
    kBC2 = 8,
    kBC2Srgb = 9,
    kBC3 = 10,
    kBC3Srgb = 11,
    kBC4 = 12,
    kBC4Snorm = 13,
    kBC5 = 14,
    kBC5Snorm = 15,
    kReserved16 = 16,
    kReserved17 = 17,

    kA8 = 20,  ///< one 8-bit channel that is never treated as grey
    kR8 = 21,  ///< converted exactly like kL8
    kL8 = 25,
    kR16F = 26,
    kR16 = 27,
    kL16 = 31,
    kR32F = 38,
    kR16G16F = 41,
    kR16G16 = 42,
    kR8G8B8A8 = 46,     ///< the canonical 8-bit colour format
    kR8G8B8A8Alt = 48,  ///< red-first like kR8G8B8A8; only image analysis takes it
    kReserved50 = 50,
    kReserved51 = 51,
    kB8G8R8A8 = 52,
    kB8G8R8X8 = 53,
    kR8G8B8X8 = 54,
    kR32G32F = 55,
    kR16G16B16A16F = 58,
    kR16G16B16A16 = 59,
    kR32G32B32F = 63,
    kR32G32B32A32F = 66,

    kBC6H = 73,
    kBC6HSigned = 74,
    kBC7 = 75,
    kBC7Srgb = 76,
    kReserved77 = 77,
    kReserved78 = 78,
};

}  // namespace Kavra::Devices
