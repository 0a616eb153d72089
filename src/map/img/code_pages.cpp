#include "map/img/code_pages.h"

#include "map/img/code_page_tables.h"
#include "map/img/iconv_code_pages.h"
#include "map/img/utf8_decoder.h"

namespace orvel {

namespace {

int decodeWithTable(Bytes text, const CodePageTable& table, std::span<char16_t> out) {
  const size_t count = text.size() < out.size() ? text.size() : out.size();
  for (size_t i = 0; i < count; ++i) {
    const uint8_t b = text[i];
    out[i] = b < 0x80 ? char16_t{b} : table[b - 0x80];
  }
  return static_cast<int>(count);
}

int decodeLatin1(Bytes text, std::span<char16_t> out) {
  const size_t count = text.size() < out.size() ? text.size() : out.size();
  for (size_t i = 0; i < count; ++i) out[i] = text[i];
  return static_cast<int>(count);
}

}  // namespace

bool hasCodePageTable(uint16_t codePage) { return codePageTable(codePage) != nullptr; }

int decodeCodePage(Bytes text, uint16_t codePage, std::span<char16_t> out) {
  if (codePage == kCodePageUtf8) return decodeUtf8(text, out);
  if (const CodePageTable* table = codePageTable(codePage)) return decodeWithTable(text, *table, out);
  if (isIconvCodePage(codePage)) {
    const int count = decodeWithIconv(text, codePage, out);
    if (count >= 0) return count;
  }
  return decodeLatin1(text, out);
}

}  // namespace orvel
