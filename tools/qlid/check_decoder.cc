// doctor: the photo decoder, looked at without running any of it.
#include "tools/qlid/checks.h"
#include "tools/qlid/decoder_file.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

Check Failure(const char* id, const std::string& text) {
  return {Verdict::kFail,
          id,
          text,
          {Format(Tr("Text can be read, photos cannot. Put the %s decoder at %s.",
                     "文字可读，照片不可读。请将 %s 解码器放到 %s。"),
                  ThisMachine().c_str(), kDecoderFile)}};
}

Check NotMade(const char* id, const std::string& why) { return {Verdict::kSkip, id, why, {}}; }

Check CheckExport(const ElfFacts& facts, const std::optional<DecoderFault>& fault) {
  const char* id = "function";
  if (!facts.fits)
    return NotMade(id, Format(Tr("its function \"%s\" was not looked for", "未查找函数 \"%s\""),
                              kDecoderFunction));
  switch (facts.exports) {
    case Export::kYes:
      return {Verdict::kOk,
              id,
              Format(Tr("it exports \"%s\"", "导出函数 \"%s\""), kDecoderFunction),
              {}};
    case Export::kNo:
      return Failure(id, fault->text);
    case Export::kUnknown:
      break;
  }
  return NotMade(id, Format(Tr("%s lists no functions: it was stripped of its section table",
                               "%s 没有节表，无法列出函数"),
                            kDecoderFile));
}

}  // namespace

CheckGroup CheckDecoder() {
  CheckGroup group = {"decoder", Tr("Photo decoder", "照片解码器"), {}};
  const DecoderFile file = LookAtDecoder();
  const std::optional<DecoderFault> fault = FaultOf(file);
  if (fault && !fault->function) {
    group.checks.push_back(Failure("file", fault->text));
  } else {
    group.checks.push_back(
        {Verdict::kOk,
         "file",
         Format(Tr("%s is for %s", "%s 适用于 %s"), kDecoderFile, file.facts.machine.c_str()),
         {}});
  }
  if (!file.there) {
    group.checks.push_back(
        NotMade("function", Tr("machine and function: there is no file", "架构与函数：没有文件")));
  } else if (file.unreadable.empty()) {
    group.checks.push_back(CheckExport(file.facts, fault));
  }
  return group;
}

}  // namespace qlid
