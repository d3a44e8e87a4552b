// The scene file layout: the file header and the host's own chunk ids (see docs/scene-files.md).
#pragma once

#include <cstddef>
#include <cstdint>

namespace hostrt::scenefile {

// "HRTSCENE" then a little-endian u32 format version.
inline constexpr std::uint8_t kMagic[8] = {'H', 'R', 'T', 'S', 'C', 'E', 'N', 'E'};
inline constexpr std::uint32_t kVersion = 1;
inline constexpr std::size_t kHeaderSize = 12;

// Top-level chunks.
inline constexpr std::uint16_t kClassDirectory = 0x2000;  // container of kClassEntry
inline constexpr std::uint16_t kClassEntry = 0x2001;      // u32 superclass, u32 class id a, u32 b, name
inline constexpr std::uint16_t kObjectTable = 0x2010;     // container of kObject
inline constexpr std::uint16_t kObject = 0x2011;          // container of the object's record chunks
inline constexpr std::uint16_t kObjectClass = 0x2012;     // u32 class directory index
inline constexpr std::uint16_t kObjectData = 0x2013;      // the object's own Save chunks
inline constexpr std::uint16_t kObjectRefs = 0x2014;      // i32 count, then i32 object index per reference
inline constexpr std::uint16_t kObjectLinks = 0x2015;     // i32 count, then i32 object index per host link
inline constexpr std::uint16_t kObjectCustAttribs = 0x2016;  // i32 object index of the custom-attribute container
inline constexpr std::uint16_t kRoots = 0x2020;           // i32 count, then i32 object index per root

// File-process type sent with the pre-save-process notification for a whole-scene save.
inline constexpr int kFileProcessSceneSave = 1;

}  // namespace hostrt::scenefile
