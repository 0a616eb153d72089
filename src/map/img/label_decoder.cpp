#include "map/img/label_decoder.h"

#include <span>

#include "map/img/code_pages.h"

namespace orvel {

namespace {

enum class Shift : uint8_t { Normal, Symbol, LowerCase };

// Writes the characters of one six-bit label, carrying the shift state from code to code.
class SixBitWriter {
 public:
  explicit SixBitWriter(char16_t* out) : out_(out) {}

  int count() const { return count_; }

  void decode(uint8_t code) {
    switch (shift_) {
      case Shift::Normal: decodeNormal(code); break;
      case Shift::Symbol:
        decodeSymbol(code);
        shift_ = Shift::Normal;
        break;
      case Shift::LowerCase:
        decodeLowerCase(code);
        shift_ = Shift::Normal;
        break;
    }
  }

 private:
  void put(char16_t c) {
    if (count_ < kSixBitLabelMax) out_[count_++] = c;
  }
  void put(const char* text) {
    while (*text) put(static_cast<char16_t>(*text++));
  }
  // Shield and separator codes come out as "~[0x..]" texts; the drawing shows them as such.
  void putMarker(uint8_t code) {
    static constexpr char kHex[] = "0123456789abcdef";
    put("~[0x");
    put(static_cast<char16_t>(kHex[code >> 4]));
    put(static_cast<char16_t>(kHex[code & 15]));
    put(u']');
  }

  void decodeNormal(uint8_t code) {
    if (code == 0)
      put(u' ');
    else if (code <= 26)
      put(static_cast<char16_t>(u'A' + code - 1));
    else if (code == 27)
      shift_ = Shift::LowerCase;
    else if (code == 28)
      shift_ = Shift::Symbol;
    else if (code >= 32 && code <= 41)
      put(static_cast<char16_t>(u'0' + code - 32));
    else
      putMarker(code);  // 29-31, 42-47
  }

  void decodeSymbol(uint8_t code) {
    if (code == 0)
      put(u'@');
    else if (code == 2)
      put(u'\'');
    else if (code <= 15 || (code >= 26 && code <= 31))
      put(static_cast<char16_t>(code + 32));
    else if (code >= 43 && code <= 47)
      put(static_cast<char16_t>(code + 48));
    else
      put(u'?');
  }

  void decodeLowerCase(uint8_t code) {
    if (code <= 26) {
      put(static_cast<char16_t>(code + 96));
    } else if (code >= 32 && code <= 41) {
      put("~[0x1b]");
      put(static_cast<char16_t>(u'0' + code - 32));
    } else if (code == 43) {
      put("~[0x1b2b]");
    } else if (code == 44) {
      put("~[0x1b2c]");
    } else {
      put(u'?');
    }
  }

  char16_t* out_;
  int count_ = 0;
  Shift shift_ = Shift::Normal;
};

// Four six-bit codes per three bytes. A group cut short by the end of the data yields only
// the codes whose six bits all lie inside it, and the label ends after them.
int decodeSixBit(Bytes data, char16_t* out) {
  SixBitWriter writer(out);
  for (size_t offset = 0; offset < data.size(); offset += 3) {
    const size_t available = data.size() - offset < 3 ? data.size() - offset : 3;
    const uint8_t b0 = data[offset];
    const uint8_t b1 = available > 1 ? data[offset + 1] : 0;
    const uint8_t b2 = available > 2 ? data[offset + 2] : 0;
    const uint8_t codes[4] = {
        static_cast<uint8_t>(b0 >> 2),
        static_cast<uint8_t>(((b0 & 3) << 4) | (b1 >> 4)),
        static_cast<uint8_t>(((b1 & 15) << 2) | (b2 >> 6)),
        static_cast<uint8_t>(b2 & 63),
    };
    const size_t whole = available * 8 / 6;  // 1, 2 or 4 codes
    for (size_t i = 0; i < whole; ++i) {
      if (codes[i] > 47) return writer.count();
      writer.decode(codes[i]);
    }
    if (whole < 4) break;
  }
  return writer.count();
}

// Byte strings end at a zero byte. Bytes below 32 are the format's control codes
// (abbreviation and shield marks, separators) and are dropped; at most kByteLabelMax of the
// rest are converted.
int decodeByteString(Bytes data, uint16_t codePage, char16_t* out) {
  uint8_t kept[kByteLabelMax];
  size_t count = 0;
  for (const uint8_t b : data) {
    if (b == 0) break;
    if (b < 32) continue;
    kept[count++] = b;
    if (count == kByteLabelMax) break;  // what follows up to the terminator is not used
  }
  return decodeCodePage(Bytes(kept, count), codePage, std::span<char16_t>(out, kLabelCapacity));
}

}  // namespace

int decodeLabel(Bytes labelData, uint32_t byteOffset, LabelSchema schema, uint16_t codePage, char16_t* out) {
  int count = 0;
  if (byteOffset < labelData.size()) {
    const Bytes label = labelData.subspan(byteOffset);
    count = schema == LabelSchema::SixBit ? decodeSixBit(label, out) : decodeByteString(label, codePage, out);
  }
  out[count] = 0;
  return count;
}

uint32_t labelByteOffset(uint32_t reference, uint8_t shift) {
  if (shift >= 32) return reference == 0 ? 0 : UINT32_MAX;
  if (reference > (UINT32_MAX >> shift)) return UINT32_MAX;
  return reference << shift;
}

}  // namespace orvel
