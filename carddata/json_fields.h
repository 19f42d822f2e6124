// Keys of the JSON texts and the record field of each, in the order in which they are packed. The
// photo comes last and is no record field.
#ifndef QUILLONID_CARDDATA_JSON_FIELDS_H
#define QUILLONID_CARDDATA_JSON_FIELDS_H

#include <cstdint>

#include "carddata/layout.h"

enum class JsonUse : std::uint8_t {
  kBothWays,  // packed, and read back
  kPacked,    // packed; a reader leaves the field alone
  kValidity,  // packed: start and end of validity, joined
  kBlank,     // packed: one blank, whatever the record holds
};

struct JsonField {
  char key[18];
  JsonUse use;
  Field field;
};

// clang-format off
inline constexpr JsonField kChinaJson[] = {
    {"Address",           JsonUse::kBothWays, QL_FIELD(China, address)    },
    {"Birth",             JsonUse::kBothWays, QL_FIELD(China, birthday)   },
    {"CardActivity",      JsonUse::kValidity, QL_FIELD(China, validStart) },
    {"CardActivityStart", JsonUse::kBothWays, QL_FIELD(China, validStart) },
    {"CardActivityExp",   JsonUse::kBothWays, QL_FIELD(China, validEnd)   },
    {"NationCode",        JsonUse::kBothWays, QL_FIELD(China, nationCode) },
    {"Ethnicity",         JsonUse::kBothWays, QL_FIELD(China, nation)     },
    {"IDNumber",          JsonUse::kBothWays, QL_FIELD(China, cardId)     },
    {"ChinaName",         JsonUse::kBothWays, QL_FIELD(China, name)       },
    {"Remark",            JsonUse::kBothWays, QL_FIELD(China, reserved)   },
    {"Sex",               JsonUse::kBothWays, QL_FIELD(China, sex)        },
    {"SexCode",           JsonUse::kBothWays, QL_FIELD(China, sexCode)    },
    {"Signatory",         JsonUse::kBothWays, QL_FIELD(China, police)     },
    {"CardType",          JsonUse::kBlank,    {}                          },
    {"FingerTemp1",       JsonUse::kBothWays, QL_FIELD(China, fingerData1)},
    {"FingerTemp2",       JsonUse::kBothWays, QL_FIELD(China, fingerData2)},
};
// clang-format on

inline constexpr JsonField kForeignJson[] = {
    {"Address",           JsonUse::kBothWays, QL_FIELD(Foreign, address)    },
    {"Birth",             JsonUse::kBothWays, QL_FIELD(Foreign, birthday)   },
    {"CardActivity",      JsonUse::kValidity, QL_FIELD(Foreign, validStart) },
    {"CardActivityStart", JsonUse::kBothWays, QL_FIELD(Foreign, validStart) },
    {"CardActivityExp",   JsonUse::kBothWays, QL_FIELD(Foreign, validEnd)   },
    {"CardType",          JsonUse::kBothWays, QL_FIELD(Foreign, cardType)   },
    {"CountryCode",       JsonUse::kBothWays, QL_FIELD(Foreign, nationCode) },
    {"EngName",           JsonUse::kBothWays, QL_FIELD(Foreign, EngName)    },
    {"GovCode",           JsonUse::kBothWays, QL_FIELD(Foreign, govCode)    },
    {"Reserved",          JsonUse::kBothWays, QL_FIELD(Foreign, otherData)  },
    {"Version",           JsonUse::kBothWays, QL_FIELD(Foreign, version)    },
    {"Ethnicity",         JsonUse::kBothWays, QL_FIELD(Foreign, nation)     },
    {"IDNumber",          JsonUse::kBothWays, QL_FIELD(Foreign, cardId)     },
    {"ChinaName",         JsonUse::kBothWays, QL_FIELD(Foreign, name)       },
    {"Remark",            JsonUse::kPacked,   QL_FIELD(Foreign, reserved)   },
    {"Sex",               JsonUse::kBothWays, QL_FIELD(Foreign, sex)        },
    {"SexCode",           JsonUse::kBothWays, QL_FIELD(Foreign, sexCode)    },
    {"Signatory",         JsonUse::kPacked,   QL_FIELD(Foreign, police)     },
    {"FingerTemp1",       JsonUse::kBothWays, QL_FIELD(Foreign, fingerData1)},
    {"FingerTemp2",       JsonUse::kBothWays, QL_FIELD(Foreign, fingerData2)},
};

inline constexpr JsonField kGatJson[] = {
    {"Address",           JsonUse::kBothWays, QL_FIELD(Gat, address)     },
    {"Birth",             JsonUse::kBothWays, QL_FIELD(Gat, birthday)    },
    {"CardActivity",      JsonUse::kValidity, QL_FIELD(Gat, validStart)  },
    {"CardActivityStart", JsonUse::kBothWays, QL_FIELD(Gat, validStart)  },
    {"CardActivityExp",   JsonUse::kBothWays, QL_FIELD(Gat, validEnd)    },
    {"CardType",          JsonUse::kBothWays, QL_FIELD(Gat, cardType)    },
    {"IDNumber",          JsonUse::kBothWays, QL_FIELD(Gat, cardId)      },
    {"ChinaName",         JsonUse::kBothWays, QL_FIELD(Gat, name)        },
    {"AppendMsg1",        JsonUse::kBothWays, QL_FIELD(Gat, gatReserved1)},
    {"AppendMsg2",        JsonUse::kBothWays, QL_FIELD(Gat, gatReserved2)},
    {"AppendMsg3",        JsonUse::kBothWays, QL_FIELD(Gat, gatReserved3)},
    {"PassNumber",        JsonUse::kBothWays, QL_FIELD(Gat, passNumber)  },
    {"SignTimes",         JsonUse::kBothWays, QL_FIELD(Gat, signTimes)   },
    {"Sex",               JsonUse::kBothWays, QL_FIELD(Gat, sex)         },
    {"SexCode",           JsonUse::kBothWays, QL_FIELD(Gat, sexCode)     },
    {"Signatory",         JsonUse::kBothWays, QL_FIELD(Gat, police)      },
    {"FingerTemp1",       JsonUse::kBothWays, QL_FIELD(Gat, fingerData1) },
    {"FingerTemp2",       JsonUse::kBothWays, QL_FIELD(Gat, fingerData2) },
};

inline constexpr JsonField kCollectJson[] = {
    {"Address",           JsonUse::kBothWays, QL_FIELD(Collect, address)     },
    {"Birth",             JsonUse::kBothWays, QL_FIELD(Collect, birthday)    },
    {"CardActivity",      JsonUse::kValidity, QL_FIELD(Collect, validStart)  },
    {"CardActivityStart", JsonUse::kBothWays, QL_FIELD(Collect, validStart)  },
    {"CardActivityExp",   JsonUse::kBothWays, QL_FIELD(Collect, validEnd)    },
    {"CardType",          JsonUse::kBothWays, QL_FIELD(Collect, cardType)    },
    {"ChinaName",         JsonUse::kBothWays, QL_FIELD(Collect, name)        },
    {"EngName",           JsonUse::kBothWays, QL_FIELD(Collect, EngName)     },
    {"GovCode",           JsonUse::kBothWays, QL_FIELD(Collect, govCode)     },
    {"Reserved",          JsonUse::kBothWays, QL_FIELD(Collect, otherData)   },
    {"Version",           JsonUse::kBothWays, QL_FIELD(Collect, version)     },
    {"Ethnicity",         JsonUse::kBothWays, QL_FIELD(Collect, nation)      },
    {"NationCode",        JsonUse::kBothWays, QL_FIELD(Collect, nationCode)  },
    {"CountryCode",       JsonUse::kPacked,   QL_FIELD(Collect, nationCode)  },
    {"IDNumber",          JsonUse::kBothWays, QL_FIELD(Collect, cardId)      },
    {"Remark",            JsonUse::kBothWays, QL_FIELD(Collect, reserved)    },
    {"Sex",               JsonUse::kBothWays, QL_FIELD(Collect, sex)         },
    {"SexCode",           JsonUse::kBothWays, QL_FIELD(Collect, sexCode)     },
    {"Signatory",         JsonUse::kBothWays, QL_FIELD(Collect, police)      },
    {"FingerTemp1",       JsonUse::kBothWays, QL_FIELD(Collect, fingerData1) },
    {"FingerTemp2",       JsonUse::kBothWays, QL_FIELD(Collect, fingerData2) },
    {"AppendMsg1",        JsonUse::kBothWays, QL_FIELD(Collect, gatReserved1)},
    {"AppendMsg2",        JsonUse::kBothWays, QL_FIELD(Collect, gatReserved2)},
    {"AppendMsg3",        JsonUse::kBothWays, QL_FIELD(Collect, gatReserved3)},
    {"PassNumber",        JsonUse::kBothWays, QL_FIELD(Collect, passNumber)  },
    {"SignTimes",         JsonUse::kBothWays, QL_FIELD(Collect, signTimes)   },
};

#endif
