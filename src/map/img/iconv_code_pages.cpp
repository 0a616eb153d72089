#include "map/img/iconv_code_pages.h"

#include <iconv.h>

#include <bit>
#include <cerrno>

#include "map/img/code_pages.h"

namespace orvel {

namespace {

const iconv_t kNoConverter = reinterpret_cast<iconv_t>(-1);

// The C library's names for a code page, the Windows name first.
struct IconvNames {
  uint16_t codePage;
  const char* names[2];
};

constexpr IconvNames kNames[] = {
    {932, {"CP932", "SHIFT_JIS"}},
    {936, {"CP936", "GBK"}},
    {949, {"CP949", "UHC"}},
    {950, {"CP950", "BIG5"}},
};

const IconvNames* findNames(uint16_t codePage) {
  for (const auto& entry : kNames)
    if (entry.codePage == codePage) return &entry;
  return nullptr;
}

// An open converter for one decoding, closed when it goes. Opening is cheap once the C
// library has loaded the code page's tables, and only labels of these code pages pay it.
class Converter {
 public:
  explicit Converter(uint16_t codePage) {
    if (const IconvNames* names = findNames(codePage)) {
      for (const char* name : names->names) {
        converter_ = iconv_open("UTF-16LE", name);
        if (converter_ != kNoConverter) break;
      }
    }
  }
  ~Converter() {
    if (converter_ != kNoConverter) iconv_close(converter_);
  }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;
  iconv_t get() const { return converter_; }

 private:
  iconv_t converter_ = kNoConverter;
};

}  // namespace

bool isIconvCodePage(uint16_t codePage) { return findNames(codePage) != nullptr; }

int decodeWithIconv(Bytes text, uint16_t codePage, std::span<char16_t> out) {
  const Converter open(codePage);
  iconv_t converter = open.get();
  if (converter == kNoConverter) return -1;

  // iconv never writes through its input pointer; the cast only satisfies its signature.
  char* in = const_cast<char*>(reinterpret_cast<const char*>(text.data()));
  size_t inLeft = text.size();
  char* const outStart = reinterpret_cast<char*>(out.data());
  char* outPos = outStart;
  size_t outLeft = out.size() * sizeof(char16_t);

  while (inLeft > 0) {
    if (iconv(converter, &in, &inLeft, &outPos, &outLeft) != static_cast<size_t>(-1)) break;
    const int error = errno;
    if (error != EILSEQ && error != EINVAL) break;  // E2BIG: the output is full
    if (outLeft < sizeof(char16_t)) break;
    const char16_t replacement = kReplacementChar;
    outPos[0] = static_cast<char>(replacement & 0xFF);
    outPos[1] = static_cast<char>(replacement >> 8);
    outPos += sizeof(char16_t);
    outLeft -= sizeof(char16_t);
    if (error == EINVAL) break;  // a character cut short by the end of the text
    ++in;                        // skip the byte the converter rejected
    --inLeft;
  }

  const size_t count = static_cast<size_t>(outPos - outStart) / sizeof(char16_t);
  if constexpr (std::endian::native == std::endian::big) {
    for (size_t i = 0; i < count; ++i) out[i] = static_cast<char16_t>((out[i] >> 8) | (out[i] << 8));
  }
  return static_cast<int>(count);
}

}  // namespace orvel
