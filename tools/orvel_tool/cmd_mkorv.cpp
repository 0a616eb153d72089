// orvel-tool mkorv IN.img -o OUT.orv [--levels BITS,...] [--verbose]
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "commands.h"
#include "map/img/img_map_file.h"
#include "map/format/mapped_file.h"
#include "map/orv/convert/orv_writer.h"

namespace orvel::tool {
namespace {

// "18,20,24" -> {18, 20, 24}; false on anything else.
bool parseLevels(std::string_view text, std::vector<int>& out) {
  out.clear();
  std::string item;
  for (size_t i = 0; i <= text.size(); ++i) {
    if (i == text.size() || text[i] == ',') {
      if (item.empty() || item.size() > 2) return false;
      const int bits = std::atoi(item.c_str());
      if (bits < 1 || bits > 24) return false;
      out.push_back(bits);
      item.clear();
    } else if (text[i] >= '0' && text[i] <= '9') {
      item.push_back(text[i]);
    } else {
      return false;
    }
  }
  return true;
}

int fail(const std::string& reason) {
  std::fprintf(stderr, "orvel-tool mkorv: %s\n", reason.c_str());
  return kExitFailed;
}

}  // namespace

int runMkorv(std::span<const char* const> args) {
  const char* inPath = nullptr;
  const char* outPath = nullptr;
  std::vector<int> levels;
  bool verbose = false;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string_view arg = args[i];
    if (arg == "-o" || arg == "--levels") {
      if (i + 1 >= args.size()) return usageError("mkorv", std::string(arg) + " needs a value");
      if (arg == "-o") {
        outPath = args[++i];
      } else if (!parseLevels(args[++i], levels)) {
        return usageError("mkorv", "bad --levels '" + std::string(args[i]) + "' (bits 1-24, comma separated)");
      }
    } else if (arg == "--verbose" || arg == "-v") {
      verbose = true;
    } else if (arg.size() > 1 && arg[0] == '-') {
      return usageError("mkorv", "unknown option '" + std::string(arg) + "' (try --help)");
    } else if (inPath) {
      return usageError("mkorv", "too many arguments (try --help)");
    } else {
      inPath = args[i];
    }
  }
  if (!inPath) return usageError("mkorv", "missing IN.img (try --help)");
  if (!outPath) return usageError("mkorv", "missing -o OUT.orv (try --help)");

  MappedFile file;
  if (file.open(inPath) != MappedFile::Status::Ok) return fail(std::string("cannot read ") + inPath);
  ImgMapFile img;
  if (!img.probe(file.bytes())) return fail(std::string(inPath) + " is not an IMG map");
  if (!img.load(file.bytes())) return fail(img.loadError());

  const OrvProgress progress = verbose ? OrvProgress([](const std::string& line) {
    std::fprintf(stderr, "mkorv: %s\n", line.c_str());
  })
                                       : OrvProgress();
  OrvMapIn map;
  std::string error;
  if (!orvFromImg(img, levels, map, error)) return fail(error);
  if (progress) {
    for (const OrvLevelIn& level : map.levels) {
      progress("IMG level of " + std::to_string(level.bits) + " bits: " + std::to_string(level.blocks.size()) +
               " subdivisions with objects");
    }
  }
  std::vector<uint8_t> bytes;
  if (!writeOrv(map, bytes, error, progress)) return fail(error);

  // Written beside the target and renamed, so a failed run never leaves half a map.
  const std::string temporary = std::string(outPath) + ".part";
  {
    std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!out.good()) {
      std::remove(temporary.c_str());
      return fail(std::string("cannot write ") + outPath);
    }
  }
  if (std::rename(temporary.c_str(), outPath) != 0) {
    std::remove(temporary.c_str());
    return fail(std::string("cannot write ") + outPath);
  }
  return kExitOk;
}

}  // namespace orvel::tool
