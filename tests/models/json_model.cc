#include "tests/models/json_model.h"

#include <initializer_list>

namespace model {

namespace {

// The letter of a short escape, or 0.
char EscapeOf(char c) {
  switch (c) {
    case '"':
    case '\\':
      return c;
    case '\b':
      return 'b';
    case '\f':
      return 'f';
    case '\n':
      return 'n';
    case '\r':
      return 'r';
    case '\t':
      return 't';
    default:
      return 0;
  }
}

template <typename Record>
KeyValues Beginning(const Record& r) {
  KeyValues values;
  values.reserve(32);
  values.emplace_back("Address", r.address);
  values.emplace_back("Birth", r.birthday);
  values.emplace_back("CardActivity", std::string(r.validStart) + "-" + r.validEnd);
  values.emplace_back("CardActivityStart", r.validStart);
  values.emplace_back("CardActivityExp", r.validEnd);
  return values;
}

void Append(KeyValues* values, std::initializer_list<std::pair<const char*, const char*>> more) {
  for (const auto& [key, text] : more) values->emplace_back(key, text);
}

}  // namespace

void AppendQuoted(std::string* out, std::string_view text) {
  out->push_back('"');
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && c != '"' && c != '\\') {
      out->push_back(c);
    } else if (const char letter = EscapeOf(c)) {
      *out += {'\\', letter};
    } else {
      *out += {'\\', 'u', '0', '0', "01"[byte / 16], "0123456789abcdef"[byte % 16]};
    }
  }
  out->push_back('"');
}

std::string Quoted(std::string_view text) {
  std::string out;
  AppendQuoted(&out, text);
  return out;
}

KeyValues ValuesOf(const PERSONINFO_CHA_FP& r) {
  KeyValues values = Beginning(r);
  Append(&values, {
                      {"NationCode",  r.nationCode },
                      {"Ethnicity",   r.nation     },
                      {"IDNumber",    r.cardId     },
                      {"ChinaName",   r.name       },
                      {"Remark",      r.reserved   },
                      {"Sex",         r.sex        },
                      {"SexCode",     r.sexCode    },
                      {"Signatory",   r.police     },
                      {"CardType",    " "          },
                      {"FingerTemp1", r.fingerData1},
                      {"FingerTemp2", r.fingerData2}
  });
  return values;
}

KeyValues ValuesOf(const PERSONINFO_FOR_FP& r) {
  KeyValues values = Beginning(r);
  Append(&values, {
                      {"CardType",    r.cardType   },
                      {"CountryCode", r.nationCode },
                      {"EngName",     r.EngName    },
                      {"GovCode",     r.govCode    },
                      {"Reserved",    r.otherData  },
                      {"Version",     r.version    },
                      {"Ethnicity",   r.nation     },
                      {"IDNumber",    r.cardId     },
                      {"ChinaName",   r.name       },
                      {"Remark",      r.reserved   },
                      {"Sex",         r.sex        },
                      {"SexCode",     r.sexCode    },
                      {"Signatory",   r.police     },
                      {"FingerTemp1", r.fingerData1},
                      {"FingerTemp2", r.fingerData2}
  });
  return values;
}

KeyValues ValuesOf(const PERSONINFO_GAT_FP& r) {
  KeyValues values = Beginning(r);
  Append(&values, {
                      {"CardType",    r.cardType    },
                      {"IDNumber",    r.cardId      },
                      {"ChinaName",   r.name        },
                      {"AppendMsg1",  r.gatReserved1},
                      {"AppendMsg2",  r.gatReserved2},
                      {"AppendMsg3",  r.gatReserved3},
                      {"PassNumber",  r.passNumber  },
                      {"SignTimes",   r.signTimes   },
                      {"Sex",         r.sex         },
                      {"SexCode",     r.sexCode     },
                      {"Signatory",   r.police      },
                      {"FingerTemp1", r.fingerData1 },
                      {"FingerTemp2", r.fingerData2 }
  });
  return values;
}

KeyValues ValuesOf(const PERSONINFO_COLLECT_FP& r) {
  KeyValues values = Beginning(r);
  Append(&values, {
                      {"CardType",    r.cardType    },
                      {"ChinaName",   r.name        },
                      {"EngName",     r.EngName     },
                      {"GovCode",     r.govCode     },
                      {"Reserved",    r.otherData   },
                      {"Version",     r.version     },
                      {"Ethnicity",   r.nation      },
                      {"NationCode",  r.nationCode  },
                      {"CountryCode", r.nationCode  },
                      {"IDNumber",    r.cardId      },
                      {"Remark",      r.reserved    },
                      {"Sex",         r.sex         },
                      {"SexCode",     r.sexCode     },
                      {"Signatory",   r.police      },
                      {"FingerTemp1", r.fingerData1 },
                      {"FingerTemp2", r.fingerData2 },
                      {"AppendMsg1",  r.gatReserved1},
                      {"AppendMsg2",  r.gatReserved2},
                      {"AppendMsg3",  r.gatReserved3},
                      {"PassNumber",  r.passNumber  },
                      {"SignTimes",   r.signTimes   }
  });
  return values;
}

std::string AnyText(Random& random, std::size_t width) {
  const int size = random.OneIn(3)
                       ? random.Between(0, static_cast<int>(width) - 1)
                       : random.Between(0, static_cast<int>(std::min<std::size_t>(width - 1, 12)));
  if (random.OneIn(2)) return random.Text(size, "0123456789ABCDEF ");
  std::string text = random.Bytes(size);
  for (char& c : text) {
    if (c == '\0') c = ' ';
  }
  return text;
}

}  // namespace model
