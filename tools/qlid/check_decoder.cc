// doctor: the photo decoder, looked at without running any of it.
#include <sys/stat.h>

#include "tools/qlid/checks.h"
#include "tools/qlid/elf_file.h"
#include "tools/qlid/files.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

constexpr char kDecoder[] = "/libwlt.so";
constexpr char kFunction[] = "unpack";
constexpr std::size_t kLimit = 64U << 20;

Check Failure(const char* id, const std::string& text) {
  return {Verdict::kFail,
          id,
          text,
          {Format(Tr("Text can be read, photos cannot. Put the %s decoder at %s.",
                     "文字可读，照片不可读。请将 %s 解码器放到 %s。"),
                  ThisMachine().c_str(), kDecoder)}};
}

Check NotMade(const char* id, const std::string& why) { return {Verdict::kSkip, id, why, {}}; }

Check CheckExport(const ElfFacts& facts) {
  const char* id = "function";
  if (!facts.fits)
    return NotMade(
        id, Format(Tr("its function \"%s\" was not looked for", "未查找函数 \"%s\""), kFunction));
  switch (facts.exports) {
    case Export::kYes:
      return {Verdict::kOk, id, Format(Tr("it exports \"%s\"", "导出函数 \"%s\""), kFunction), {}};
    case Export::kNo:
      return Failure(
          id, Format(Tr("%s has no function \"%s\"", "%s 没有函数 \"%s\""), kDecoder, kFunction));
    case Export::kUnknown:
      break;
  }
  return NotMade(id, Format(Tr("%s lists no functions: it was stripped of its section table",
                               "%s 没有节表，无法列出函数"),
                            kDecoder));
}

}  // namespace

CheckGroup CheckDecoder() {
  CheckGroup group = {"decoder", Tr("Photo decoder", "照片解码器"), {}};
  struct stat status = {};
  if (stat(kDecoder, &status) != 0) {
    group.checks.push_back(Failure("file", Format(Tr("there is no %s", "没有 %s"), kDecoder)));
    group.checks.push_back(
        NotMade("function", Tr("machine and function: there is no file", "架构与函数：没有文件")));
    return group;
  }
  std::vector<std::uint8_t> file;
  std::string problem;
  if (!S_ISREG(status.st_mode) || !ReadFile(kDecoder, kLimit, &file, &problem)) {
    if (problem.empty()) problem = Tr("it is no regular file", "不是普通文件");
    group.checks.push_back(Failure(
        "file", Format(Tr("%s cannot be read: %s", "无法读取 %s：%s"), kDecoder, problem.c_str())));
    return group;
  }
  const ElfFacts facts = InspectElf(file, kFunction);
  if (!facts.elf || !facts.shared) {
    group.checks.push_back(
        Failure("file", Format(Tr("%s is no shared library", "%s 不是动态库"), kDecoder)));
  } else if (!facts.fits) {
    group.checks.push_back(
        Failure("file", Format(Tr("%s is for %s; this machine is %s", "%s 适用于 %s；本机为 %s"),
                               kDecoder, facts.machine.c_str(), ThisMachine().c_str())));
  } else {
    group.checks.push_back(
        {Verdict::kOk,
         "file",
         Format(Tr("%s is for %s", "%s 适用于 %s"), kDecoder, facts.machine.c_str()),
         {}});
  }
  group.checks.push_back(CheckExport(facts));
  return group;
}

}  // namespace qlid
