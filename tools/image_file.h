// What the file of a program or library says of itself: its headers, read from its bytes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace caixora {

struct ImageExport {
  std::string name;
  std::uint32_t ordinal = 0;
};

struct ImageFile {
  enum class Shape : std::uint8_t {
    kWhole,
    kNoImage,    // something else: no headers of an image
    kTruncated,  // ends before what its headers announce
    kDamaged,    // whole in size; its tables make no sense
  };
  static constexpr std::uint16_t kX64 = 0x8664, kX86 = 0x014C, kArm64 = 0xAA64;

  Shape shape = Shape::kNoImage;
  std::uint16_t machine = 0;
  bool is_library = false;
  bool runs_as_any = false;          // .NET's "Any CPU": a 64-bit process, whatever `machine` says
  std::uint64_t announced_size = 0;  // of a file that is whole
  std::vector<ImageExport> exports;  // those with names
};

ImageFile ReadImage(std::string_view bytes);

// True when the file begins as an image does. Two bytes are enough.
constexpr bool BeginsAsImage(std::string_view bytes) { return bytes.starts_with("MZ"); }

}  // namespace caixora
