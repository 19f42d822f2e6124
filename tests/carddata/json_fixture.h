// Records whose every field has a text of its own, and the JSON texts that belong to them. The keys
// and their order stand here apart from the library's.
#ifndef QUILLONID_TESTS_CARDDATA_JSON_FIXTURE_H
#define QUILLONID_TESTS_CARDDATA_JSON_FIXTURE_H

#include <cstddef>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "quillonid/carddata.h"

struct Member {
  std::size_t offset;
  std::size_t width;
};

enum KeyUse {
  kBothWays,  // packed, and read back
  kPackOnly,  // packed, and left alone by the reader
  kValidity,  // packed: start and end of validity
  kBlank,     // packed: one blank; the member does not matter
};

struct Key {
  const char* key;
  KeyUse use;
  Member member;
};

#define MEMBER(kind, name) \
  Member { offsetof(PERSONINFO_##kind##_FP, name), sizeof(PERSONINFO_##kind##_FP::name) }

inline const std::vector<Key> kChinaKeys = {
    {"Address",           kBothWays, MEMBER(CHA, address)    },
    {"Birth",             kBothWays, MEMBER(CHA, birthday)   },
    {"CardActivity",      kValidity, MEMBER(CHA, validStart) },
    {"CardActivityStart", kBothWays, MEMBER(CHA, validStart) },
    {"CardActivityExp",   kBothWays, MEMBER(CHA, validEnd)   },
    {"NationCode",        kBothWays, MEMBER(CHA, nationCode) },
    {"Ethnicity",         kBothWays, MEMBER(CHA, nation)     },
    {"IDNumber",          kBothWays, MEMBER(CHA, cardId)     },
    {"ChinaName",         kBothWays, MEMBER(CHA, name)       },
    {"Remark",            kBothWays, MEMBER(CHA, reserved)   },
    {"Sex",               kBothWays, MEMBER(CHA, sex)        },
    {"SexCode",           kBothWays, MEMBER(CHA, sexCode)    },
    {"Signatory",         kBothWays, MEMBER(CHA, police)     },
    {"CardType",          kBlank,    MEMBER(CHA, name)       },
    {"FingerTemp1",       kBothWays, MEMBER(CHA, fingerData1)},
    {"FingerTemp2",       kBothWays, MEMBER(CHA, fingerData2)},
};

inline const std::vector<Key> kForeignKeys = {
    {"Address",           kBothWays, MEMBER(FOR, address)    },
    {"Birth",             kBothWays, MEMBER(FOR, birthday)   },
    {"CardActivity",      kValidity, MEMBER(FOR, validStart) },
    {"CardActivityStart", kBothWays, MEMBER(FOR, validStart) },
    {"CardActivityExp",   kBothWays, MEMBER(FOR, validEnd)   },
    {"CardType",          kBothWays, MEMBER(FOR, cardType)   },
    {"CountryCode",       kBothWays, MEMBER(FOR, nationCode) },
    {"EngName",           kBothWays, MEMBER(FOR, EngName)    },
    {"GovCode",           kBothWays, MEMBER(FOR, govCode)    },
    {"Reserved",          kBothWays, MEMBER(FOR, otherData)  },
    {"Version",           kBothWays, MEMBER(FOR, version)    },
    {"Ethnicity",         kBothWays, MEMBER(FOR, nation)     },
    {"IDNumber",          kBothWays, MEMBER(FOR, cardId)     },
    {"ChinaName",         kBothWays, MEMBER(FOR, name)       },
    {"Remark",            kPackOnly, MEMBER(FOR, reserved)   },
    {"Sex",               kBothWays, MEMBER(FOR, sex)        },
    {"SexCode",           kBothWays, MEMBER(FOR, sexCode)    },
    {"Signatory",         kPackOnly, MEMBER(FOR, police)     },
    {"FingerTemp1",       kBothWays, MEMBER(FOR, fingerData1)},
    {"FingerTemp2",       kBothWays, MEMBER(FOR, fingerData2)},
};

inline const std::vector<Key> kGatKeys = {
    {"Address",           kBothWays, MEMBER(GAT, address)     },
    {"Birth",             kBothWays, MEMBER(GAT, birthday)    },
    {"CardActivity",      kValidity, MEMBER(GAT, validStart)  },
    {"CardActivityStart", kBothWays, MEMBER(GAT, validStart)  },
    {"CardActivityExp",   kBothWays, MEMBER(GAT, validEnd)    },
    {"CardType",          kBothWays, MEMBER(GAT, cardType)    },
    {"IDNumber",          kBothWays, MEMBER(GAT, cardId)      },
    {"ChinaName",         kBothWays, MEMBER(GAT, name)        },
    {"AppendMsg1",        kBothWays, MEMBER(GAT, gatReserved1)},
    {"AppendMsg2",        kBothWays, MEMBER(GAT, gatReserved2)},
    {"AppendMsg3",        kBothWays, MEMBER(GAT, gatReserved3)},
    {"PassNumber",        kBothWays, MEMBER(GAT, passNumber)  },
    {"SignTimes",         kBothWays, MEMBER(GAT, signTimes)   },
    {"Sex",               kBothWays, MEMBER(GAT, sex)         },
    {"SexCode",           kBothWays, MEMBER(GAT, sexCode)     },
    {"Signatory",         kBothWays, MEMBER(GAT, police)      },
    {"FingerTemp1",       kBothWays, MEMBER(GAT, fingerData1) },
    {"FingerTemp2",       kBothWays, MEMBER(GAT, fingerData2) },
};

inline const std::vector<Key> kCollectKeys = {
    {"Address",           kBothWays, MEMBER(COLLECT, address)     },
    {"Birth",             kBothWays, MEMBER(COLLECT, birthday)    },
    {"CardActivity",      kValidity, MEMBER(COLLECT, validStart)  },
    {"CardActivityStart", kBothWays, MEMBER(COLLECT, validStart)  },
    {"CardActivityExp",   kBothWays, MEMBER(COLLECT, validEnd)    },
    {"CardType",          kBothWays, MEMBER(COLLECT, cardType)    },
    {"ChinaName",         kBothWays, MEMBER(COLLECT, name)        },
    {"EngName",           kBothWays, MEMBER(COLLECT, EngName)     },
    {"GovCode",           kBothWays, MEMBER(COLLECT, govCode)     },
    {"Reserved",          kBothWays, MEMBER(COLLECT, otherData)   },
    {"Version",           kBothWays, MEMBER(COLLECT, version)     },
    {"Ethnicity",         kBothWays, MEMBER(COLLECT, nation)      },
    {"NationCode",        kBothWays, MEMBER(COLLECT, nationCode)  },
    {"CountryCode",       kPackOnly, MEMBER(COLLECT, nationCode)  },
    {"IDNumber",          kBothWays, MEMBER(COLLECT, cardId)      },
    {"Remark",            kBothWays, MEMBER(COLLECT, reserved)    },
    {"Sex",               kBothWays, MEMBER(COLLECT, sex)         },
    {"SexCode",           kBothWays, MEMBER(COLLECT, sexCode)     },
    {"Signatory",         kBothWays, MEMBER(COLLECT, police)      },
    {"FingerTemp1",       kBothWays, MEMBER(COLLECT, fingerData1) },
    {"FingerTemp2",       kBothWays, MEMBER(COLLECT, fingerData2) },
    {"AppendMsg1",        kBothWays, MEMBER(COLLECT, gatReserved1)},
    {"AppendMsg2",        kBothWays, MEMBER(COLLECT, gatReserved2)},
    {"AppendMsg3",        kBothWays, MEMBER(COLLECT, gatReserved3)},
    {"PassNumber",        kBothWays, MEMBER(COLLECT, passNumber)  },
    {"SignTimes",         kBothWays, MEMBER(COLLECT, signTimes)   },
};

#undef MEMBER

// What stands in a member of the records below; fits the narrowest.
inline std::string TextOf(const Member& member) { return "f" + std::to_string(member.offset); }

template <typename Record>
std::string MemberText(const Record& record, const Member& member) {
  const char* const text = reinterpret_cast<const char*>(&record) + member.offset;
  return std::string(text, strnlen(text, member.width));
}

template <typename Record>
void SetMember(Record& record, const Member& member, const std::string& text) {
  char* const field = reinterpret_cast<char*>(&record) + member.offset;
  std::memset(field, 0, member.width);
  text.copy(field, member.width);
}

// A record with a text in every field that has a key.
template <typename Record>
Record Filled(const std::vector<Key>& keys) {
  Record record = {};
  for (const Key& key : keys) {
    if (key.use == kBothWays || key.use == kPackOnly) {
      SetMember(record, key.member, TextOf(key.member));
    }
  }
  return record;
}

using KeyValues = std::vector<std::pair<std::string, std::string>>;

// Keys and values of a record in the order of its text.
template <typename Record>
KeyValues ValuesOf(const Record& record, const std::vector<Key>& keys) {
  KeyValues values;
  for (const Key& key : keys) {
    std::string value = MemberText(record, key.member);
    if (key.use == kValidity) value += std::string("-") + record.validEnd;
    if (key.use == kBlank) value = " ";
    values.emplace_back(key.key, value);
  }
  return values;
}

// The text as the JSON library prints it. Values are taken as they stand.
inline std::string JsonOf(const KeyValues& values) {
  std::string text;
  for (const auto& [key, value] : values) {
    text.append(text.empty() ? "{\n" : ",\n");
    text.append("\t\"").append(key).append("\":\t\"").append(value).append("\"");
  }
  return text + "\n}";
}

// An output buffer of the size that the header asks for, with bytes behind it that must stay.
class JsonBuffer {
 public:
  explicit JsonBuffer(char filling = '\0')
      : bytes_(std::string(QL_JSON_SIZE, filling) + std::string(QL_JSON_SIZE, '\xEE')) {}
  char* data() { return bytes_.data(); }
  std::string text() const { return bytes_.substr(0, bytes_.find('\0')); }
  const std::string& bytes() const { return bytes_; }
  bool IsWholeBehind() const {
    return bytes_.find_first_not_of('\xEE', QL_JSON_SIZE) == std::string::npos;
  }

 private:
  std::string bytes_;
};

#endif
