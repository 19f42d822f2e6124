#include "tools/qlid/decoder_file.h"

#include <sys/stat.h>

#include "tools/qlid/files.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

constexpr std::size_t kLimit = 64U << 20;

}  // namespace

DecoderFile LookAtDecoder() {
  DecoderFile file;
  struct stat status = {};
  if (stat(kDecoderFile, &status) != 0) return file;
  file.there = true;
  std::vector<std::uint8_t> bytes;
  if (!S_ISREG(status.st_mode)) {
    file.unreadable = Tr("it is no regular file", "不是普通文件");
  } else if (ReadFile(kDecoderFile, kLimit, &bytes, &file.unreadable)) {
    file.facts = InspectElf(bytes, kDecoderFunction);
  }
  return file;
}

std::optional<DecoderFault> FaultOf(const DecoderFile& file) {
  if (!file.there)
    return DecoderFault{"decoder-missing", Format(Tr("there is no %s", "没有 %s"), kDecoderFile)};
  if (!file.unreadable.empty()) {
    return DecoderFault{"decoder-unreadable", Format(Tr("%s cannot be read: %s", "无法读取 %s：%s"),
                                                     kDecoderFile, file.unreadable.c_str())};
  }
  if (!file.facts.elf || !file.facts.shared) {
    return DecoderFault{"decoder-unreadable",
                        Format(Tr("%s is no shared library", "%s 不是动态库"), kDecoderFile)};
  }
  if (!file.facts.fits) {
    return DecoderFault{"decoder-machine",
                        Format(Tr("%s is for %s; this machine is %s", "%s 适用于 %s；本机为 %s"),
                               kDecoderFile, file.facts.machine.c_str(), ThisMachine().c_str())};
  }
  if (file.facts.exports == Export::kNo) {
    return DecoderFault{"decoder-function",
                        Format(Tr("%s has no function \"%s\"", "%s 没有函数 \"%s\""), kDecoderFile,
                               kDecoderFunction),
                        true};
  }
  return std::nullopt;
}

}  // namespace qlid
