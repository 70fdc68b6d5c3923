#include "tools/image_file.h"

#include <algorithm>
#include <cstddef>
#include <optional>

namespace caixora {
namespace {

// Offsets of the format (PE/COFF), from the start of the structure that each belongs to.
constexpr std::size_t kHeadersAt = 0x3C;
constexpr std::size_t kFileHeader = 24;  // with the signature in front
constexpr std::size_t kSectionHeader = 40;
constexpr std::uint32_t kIsLibrary = 0x2000;
constexpr std::uint32_t kPlus = 0x20B;  // the optional header of 64-bit images
constexpr std::uint32_t kMostExports = 65536;
constexpr std::size_t kNetDirectory = 14;              // of the data directories, eight bytes each
constexpr std::uint32_t kNeeds32Bits = 0x2 | 0x20000;  // or prefers them

// Numbers from anywhere in the file; a place outside of it makes them all worthless.
class Reader {
 public:
  explicit Reader(std::string_view bytes) : bytes_(bytes) {}

  std::uint32_t Number(std::size_t at, std::size_t size) {
    if (at > bytes_.size() || bytes_.size() - at < size) return failed_ = true, 0;
    std::uint32_t number = 0;
    for (std::size_t i = size; i-- > 0;)
      number = number << 8 | static_cast<unsigned char>(bytes_[at + i]);
    return number;
  }

  std::string Text(std::size_t at) {
    const std::size_t end = at < bytes_.size() ? bytes_.find('\0', at) : bytes_.npos;
    if (end == bytes_.npos) return failed_ = true, std::string();
    return std::string(bytes_.substr(at, end - at));
  }

  bool failed() const { return failed_; }

 private:
  std::string_view bytes_;
  bool failed_ = false;
};

struct Section {
  std::uint32_t address, size, offset;
};

// Where in the file an address of the loaded image lies.
std::optional<std::size_t> OffsetOf(const std::vector<Section>& sections, std::uint32_t address) {
  for (const Section& section : sections)
    if (address >= section.address && address - section.address < section.size)
      return std::size_t{section.offset} + (address - section.address);
  return std::nullopt;
}

// False when the tables lead nowhere.
bool ReadExports(Reader& reader, const std::vector<Section>& sections, std::uint32_t directory,
                 std::vector<ImageExport>& exports) {
  const std::optional<std::size_t> table = OffsetOf(sections, directory);
  if (!table) return false;
  const std::uint32_t base = reader.Number(*table + 16, 4);
  const std::uint32_t count = reader.Number(*table + 24, 4);
  const std::optional<std::size_t> names = OffsetOf(sections, reader.Number(*table + 32, 4));
  const std::optional<std::size_t> places = OffsetOf(sections, reader.Number(*table + 36, 4));
  if (count == 0) return true;
  if (!names || !places || count > kMostExports) return false;
  for (std::uint32_t i = 0; i < count && !reader.failed(); ++i) {
    const std::optional<std::size_t> name =
        OffsetOf(sections, reader.Number(*names + std::size_t{i} * 4, 4));
    if (!name) return false;
    exports.push_back({reader.Text(*name), base + reader.Number(*places + std::size_t{i} * 2, 2)});
  }
  return !reader.failed();
}

}  // namespace

ImageFile ReadImage(std::string_view bytes) {
  ImageFile image;
  if (!BeginsAsImage(bytes)) return image;
  Reader reader(bytes);
  const auto truncated = [&] {
    image.shape = ImageFile::Shape::kTruncated;
    return image;
  };

  const std::size_t headers = reader.Number(kHeadersAt, 4);
  if (reader.failed()) return truncated();
  const std::uint32_t signature = reader.Number(headers, 4);
  if (reader.failed()) return truncated();
  if (signature != 0x4550) return image;  // "PE"
  image.machine = static_cast<std::uint16_t>(reader.Number(headers + 4, 2));
  const std::uint32_t section_count = reader.Number(headers + 6, 2);
  const std::uint32_t optional_size = reader.Number(headers + 20, 2);
  image.is_library = (reader.Number(headers + 22, 2) & kIsLibrary) != 0;
  const std::size_t optional = headers + kFileHeader;
  const std::size_t directories = reader.Number(optional, 2) == kPlus ? 112 : 96;
  const std::uint32_t directory_count =
      optional_size > directories ? reader.Number(optional + directories - 4, 4) : 0;
  const auto directory = [&](std::size_t index) {
    return index < directory_count ? reader.Number(optional + directories + index * 8, 4) : 0;
  };
  const std::uint32_t exports = directory(0), net = directory(kNetDirectory);

  std::vector<Section> sections;
  for (std::uint32_t i = 0; i < section_count && !reader.failed(); ++i) {
    const std::size_t at = optional + optional_size + i * kSectionHeader;
    const Section section{reader.Number(at + 12, 4), reader.Number(at + 16, 4),
                          reader.Number(at + 20, 4)};
    const std::uint64_t end = std::uint64_t{section.offset} + section.size;
    image.announced_size = std::max(image.announced_size, end);
    sections.push_back(section);
  }
  if (const std::optional<std::size_t> at = OffsetOf(sections, net); net != 0 && at)
    image.runs_as_any = (reader.Number(*at + 16, 4) & kNeeds32Bits) == 0;
  if (reader.failed() || image.announced_size > bytes.size()) return truncated();
  const bool sound = exports == 0 || ReadExports(reader, sections, exports, image.exports);
  image.shape = sound && !sections.empty() ? ImageFile::Shape::kWhole : ImageFile::Shape::kDamaged;
  return image;
}

}  // namespace caixora
