#include "tools/qlid/simulator_text.h"

#include "tools/qlid/phrases.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

constexpr int kNameColumns = 20;
constexpr int kAboutColumns = 42;

// Requests and answers.
constexpr Phrase kTraffic[] = {
    {"device check",                                    "检测设备"                        },
    {"search card",                                     "寻卡"                              },
    {"select card",                                     "选卡"                              },
    {"read",                                            "读卡"                              },
    {"read with fingerprints",                          "读卡和指纹"                     },
    {"one-command read",                                "单命令读卡"                     },
    {"card check",                                      "检测卡"                           },
    {"channel data",                                    "通道数据"                        },
    {"noise",                                           "杂乱字节"                        },
    {"frame with a wrong check byte",                   "校验字节错误的帧"            },
    {"unknown command",                                 "未知命令"                        },
    {"back to the reader's speed",                      "恢复读卡器波特率"            },
    {"extension (.)",                                   "扩展 $1"                           },
    {"speed ([0-9]+) bit/s",                            "波特率 $1"                        },
    {"packet that does not hold together",              "残缺的数据包"                  },
    {"not in the recording",                            "记录中没有"                     },
    {"device ready|ready",                              "就绪"                              },
    {"card found",                                      "找到卡"                           },
    {"card selected",                                   "已选卡"                           },
    {"card data",                                       "卡数据"                           },
    {"no card",                                         "无卡"                              },
    {"read failed",                                     "读取失败"                        },
    {"unsupported",                                     "不支持"                           },
    {"unsupported, as long as a card",                  "不支持，长度与卡应答相同"},
    {"IC power-on",                                     "IC 上电"                           },
    {"unknown status",                                  "未知状态"                        },
    {"unknown answer",                                  "未知应答"                        },
    {"bytes of no frame",                               "不成帧的字节"                  },
    {"silent",                                          "无应答"                           },
    {"not understood: the reader is at ([0-9]+) bit/s", "无法识别：读卡器为 $1 bit/s"},
    {"channel data, echoed",                            "通道数据，原样返回"         },
    {"card of kind ([0-9]+)",                           "卡种类 $1"                        },
    {"read done, ([0-9]+) bytes",                       "读卡完成，$1 字节"            },
    {"read reply of ([0-9]+) bytes",                    "读卡应答，$1 字节"            },
    {"read reply cut after ([0-9]+) bytes",             "读卡应答在 $1 字节后中断"  },
    {"as recorded",                                     "同记录"                           },
};

// What is wrong with a fault's name.
constexpr Phrase kFaultProblems[] = {
    {"there is no fault (\".*\")",                         "没有故障 $1"                        },
    {"(\".*\") takes no value",                            "$1 不带值"                           },
    {"(\".*\") takes a number from 0 to 1000000 \\(.*\\)", "$1 的值须为 0 至 1000000 的整数"},
};

// What is wrong with a recording.
constexpr Phrase kRecordingProblems[] = {
    {"line 1: it is not \"(.*)\"",                               "第 1 行不是 \"$1\""                     },
    {"line ([0-9]+): the time goes back",                        "第 $1 行：时间倒退"                  },
    {"line ([0-9]+): a time in seconds belongs first",           "第 $1 行：开头应为以秒计的时间"},
    {"line ([0-9]+): .* belongs behind the time",
     "第 $1 行：时间之后应为 \"<\"、\">\" 或 \"speed\""                                            },
    {"line ([0-9]+): a speed in bit/s belongs behind \"speed\"",
     "第 $1 行：\"speed\" 之后应为波特率"                                                           },
    {"line ([0-9]+): (\".*\") is no byte",                       "第 $1 行：$2 不是字节"               },
    {"line ([0-9]+): there are no bytes",                        "第 $1 行：没有字节"                  },
};

const char* UnitText(std::string_view unit) {
  if (unit == "SECONDS") return Tr("SECONDS", "秒");
  if (unit == "BYTES") return Tr("BYTES", "字节");
  return Tr("BYTES/S", "字节/秒");
}

}  // namespace

std::string About(const simulator::Specimen& person) {
  return ChosenLanguage() == Language::kChinese ? person.about_chinese : person.about;
}

std::string About(const simulator::FaultRow& fault) { return Tr(fault.about, fault.about_chinese); }

std::string FaultHelp() {
  std::string help;
  for (const simulator::FaultRow& row : simulator::FaultTable()) {
    std::string name = row.name;
    if (row.unit[0] != '\0') name += Format("=%s", UnitText(row.unit));
    help += Format("%s  %s  -> %d\n", PaddedTo(name, kNameColumns).c_str(),
                   PaddedTo(About(row), kAboutColumns).c_str(), row.result);
  }
  return help;
}

std::optional<simulator::Fault> FindFault(const std::string& name, std::string* problem) {
  auto fault = simulator::ParseFault(name, problem);
  if (!fault) *problem = Rephrased(*problem, kFaultProblems);
  return fault;
}

std::string TrafficText(const std::string& meaning) { return Rephrased(meaning, kTraffic); }

std::string RecordingProblem(const std::string& problem) {
  return Rephrased(problem, kRecordingProblems);
}

}  // namespace qlid
