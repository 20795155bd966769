/// Headers of band rasters as mapping programs write and read them.
///
/// The common reading's truth is the description that the maker of the format gives ("BIL, BIP, and BSQ raster files");
/// where that is silent, what GDAL's driver for such headers does. The header lies beside the file with the samples,
/// whatever the name of that, and has the extension ".hdr" in capitals or not:
///
///     keyword          value                                                          where it is absent
///     NCOLS, NROWS     columns, rows                                                  not accepted
///     NBANDS           bands, up to 65535                                             1
///     NBITS            bits of a sample: 1 to 8, 16, 32, 64 (floats only)             8, or what the length gives
///     PIXELTYPE        S... signed, U... unsigned, F... floats of 32 or 64 bits       unsigned; see below
///     BYTEORDER        I... or L...: the lowest byte first; any other: the highest    the lowest
///     LAYOUT           how bands interleave: bil by line, bip by pixel, bsq not       the extension's, or bil
///     SKIPBYTES        before the first row                                           0
///     BANDROWBYTES     one row of one band                                            what its samples take
///     TOTALROWBYTES    one row of all bands; of bsq also one of a band                the same of them all
///     BANDGAPBYTES     between the bands of bsq                                       0
///     NODATA           the sample of pixels without a value; also NODATA_VALUE        there is none
///
/// and BAND_RGB and RECORDSKIPBYTES as in `SpotReader.h`. A keyword is the first word of its line, in any case; a value
/// is the next one; blanks, tabs and "=" stand between. The last of two lines counts. What begins with another word
/// is a comment. Counts that are too small for the samples are taken as absent. Rows of samples below 8 bits are filled
/// up to whole bytes; where the length of the file is that of a byte for each of them, they are bytes.
///
/// Without NBITS, PIXELTYPE and counts the length of the samples tells: 2, 4 or 8 bytes each, where the latter two
/// are floats. A file named ".flt" holds floats. Without PIXELTYPE a NODATA below zero makes samples signed.
#pragma once

#include "readers/spot/SpotHeader.h"

#include <string_view>

namespace Kavra::Devices {

/// Opens the file at the path and the header beside it. `open` is the file where it is open already: it is looked at
/// once more instead of opened. Fails unless both are there.
[[nodiscard]] Common::Result<PictureFiles> OpenSpotCommonFiles(const KString& path, Common::ByteSource* open = nullptr);

/// What a name tells of its file: whether it is one of samples, or floats.
enum class SpotName { kOther, kByLine, kByPixel, kSequential, kFloats };
SpotName SpotNameOf(std::wstring_view path);

/// Parses the text of a header for a file of `dataBytes` bytes, without palette and path. Fails for a variety that is
/// not read; not for a file that is too short (`SpotRowsIn`).
[[nodiscard]] Common::Result<SpotHeader> ParseSpotCommonHeader(std::string_view text, std::uint64_t dataBytes,
                                                               SpotName name);

/// Reads the header of open files, 1 MiB at most, so. The positions of the sources do not matter and are not kept.
[[nodiscard]] Common::Result<SpotHeader> ReadSpotCommonHeader(PictureFiles& files);

/// How many of its rows a file of so many bytes holds whole, of all bands.
std::int64_t SpotRowsIn(const SpotHeader& header, std::uint64_t dataBytes);

/// The bytes of a row's samples: of one band, or of all where they are interleaved by pixel.
std::int64_t SpotLineBytes(const SpotHeader& header);

/// Gives a raster of one band, of up to 16 bits, the colours in the ".clr" file beside a path or, where there is none,
/// in the ".pal" file. Values without a colour are transparent black; the no-data value keeps its colour and is
/// transparent. Where all values of up to 8 bits have a grey these become the palette. One that is none is left out.
void AddSpotColours(const KString& path, SpotHeader& header);

/// The four bytes of the pixel of each value of a sample of up to 8 bits, 256 of them: the colours, or greys of the palette
/// or that go from black to white. A no-data value is transparent.
std::vector<std::uint32_t> SpotValuePixels(const SpotHeader& header);

}  // namespace Kavra::Devices
