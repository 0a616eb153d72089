#include "map/orv/convert/orv_prefix_code.h"

#include <algorithm>
#include <queue>

namespace orvel {
namespace {

// Huffman code lengths, in the order of `weights`.
std::vector<unsigned> huffmanLengths(const std::vector<uint64_t>& weights) {
  const size_t n = weights.size();
  std::vector<unsigned> lengths(n, 0);
  if (n < 2) return lengths;
  // Nodes 0..n-1 are leaves; parents follow.
  std::vector<size_t> parent(2 * n - 1, 0);
  using Item = std::pair<uint64_t, size_t>;  // weight, node
  std::priority_queue<Item, std::vector<Item>, std::greater<>> queue;
  for (size_t i = 0; i < n; ++i) queue.emplace(weights[i], i);
  size_t next = n;
  while (queue.size() > 1) {
    const Item a = queue.top();
    queue.pop();
    const Item b = queue.top();
    queue.pop();
    parent[a.second] = next;
    parent[b.second] = next;
    queue.emplace(a.first + b.first, next);
    ++next;
  }
  const size_t root = next - 1;
  std::vector<unsigned> depth(2 * n - 1, 0);
  for (size_t node = root; node-- > 0;) depth[node] = depth[parent[node]] + 1;  // parents come later
  for (size_t i = 0; i < n; ++i) lengths[i] = depth[i];
  return lengths;
}

uint32_t reversed(uint32_t code, unsigned length) {
  uint32_t out = 0;
  for (unsigned i = 0; i < length; ++i) out |= ((code >> i) & 1u) << (length - 1 - i);
  return out;
}

}  // namespace

std::vector<OrvCode> buildPrefixCode(const SymbolCounts& counts, unsigned maxLength) {
  std::vector<OrvCode> codes;
  std::vector<uint64_t> weights;
  for (const auto& [symbol, count] : counts) {
    if (count == 0) continue;
    codes.push_back(OrvCode{symbol, 0, 0});
    weights.push_back(count);
  }
  if (codes.size() < 2) return codes;

  // Flattening the weights shortens the longest codes; repeated until they fit.
  std::vector<unsigned> lengths = huffmanLengths(weights);
  while (*std::max_element(lengths.begin(), lengths.end()) > maxLength) {
    for (uint64_t& w : weights) w = (w >> 1) | 1u;
    lengths = huffmanLengths(weights);
  }

  // Canonical codes: by length, then symbol; counted from the most significant end and
  // reversed so that the code's first bit is read first.
  std::vector<size_t> order(codes.size());
  for (size_t i = 0; i < order.size(); ++i) order[i] = i;
  std::sort(order.begin(), order.end(), [&](size_t a, size_t b) {
    return lengths[a] != lengths[b] ? lengths[a] < lengths[b] : codes[a].symbol < codes[b].symbol;
  });
  uint64_t code = 0;
  unsigned previous = lengths[order[0]];
  for (size_t i : order) {
    code <<= lengths[i] - previous;
    previous = lengths[i];
    codes[i].length = static_cast<uint8_t>(lengths[i]);
    codes[i].bits = reversed(static_cast<uint32_t>(code), lengths[i]);
    ++code;
  }
  return codes;
}

OrvCodeBook::OrvCodeBook(const std::vector<OrvCode>& codes) : codes_(codes) {
  for (const OrvCode& code : codes) bySymbol_[code.symbol] = code;
}

bool OrvCodeBook::put(OrvBitWriter& out, uint16_t symbol) const {
  const auto it = bySymbol_.find(symbol);
  if (it == bySymbol_.end()) return false;
  out.put(it->second.bits, it->second.length);
  return true;
}

void appendCodeTable(std::vector<uint8_t>& out, const std::vector<OrvCode>& codes) {
  auto u16 = [&](uint32_t v) {
    out.push_back(static_cast<uint8_t>(v));
    out.push_back(static_cast<uint8_t>(v >> 8));
  };
  u16(static_cast<uint32_t>(codes.size()));
  for (const OrvCode& code : codes) {
    u16(code.symbol);
    out.push_back(code.length);
    for (unsigned i = 0; i < (code.length + 7u) / 8u; ++i) out.push_back(static_cast<uint8_t>(code.bits >> (8 * i)));
  }
}

}  // namespace orvel
