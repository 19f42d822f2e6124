// Where the text fields of the person records stand: one row per field, in record order. Parsing,
// conversion and JSON walk such rows, so that each is one loop for all kinds of card.
//
// The rows are made from the records with fingerprint templates. A record without them is the same
// up to the templates, so the rows before those hold for both.
#ifndef QUILLONID_CARDDATA_LAYOUT_H
#define QUILLONID_CARDDATA_LAYOUT_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "quillonid/records.h"

using ChinaRecord = PERSONINFO_CHA_FP;
using ForeignRecord = PERSONINFO_FOR_FP;
using GatRecord = PERSONINFO_GAT_FP;
using PersonRecord = PERSONINFO_FP;
using CollectRecord = PERSONINFO_COLLECT_FP;

static_assert(offsetof(ChinaRecord, fingerData1) == sizeof(PERSONINFO_CHA));
static_assert(offsetof(ForeignRecord, fingerData1) == sizeof(PERSONINFO_FOR));
static_assert(offsetof(GatRecord, fingerData1) == sizeof(PERSONINFO_GAT));
static_assert(offsetof(PersonRecord, fingerData1) == sizeof(PERSONINFO));
static_assert(offsetof(CollectRecord, fingerData1) == sizeof(PERSONINFO_COLLECT));

// A text field of a record: where it starts, and its width with the terminating zero.
struct Field {
  char name[14];
  std::uint16_t offset;
  std::uint16_t width;

  char* In(void* record) const { return static_cast<char*>(record) + offset; }
  const char* In(const void* record) const { return static_cast<const char*>(record) + offset; }
};

// Name, offset and width of `member` in the record of a kind: China, Foreign, Gat, Person, Collect.
#define QL_FIELD(Kind, member) \
  Field { #member, offsetof(Kind##Record, member), sizeof(Kind##Record::member) }

inline constexpr Field kChinaRecord[] = {
    QL_FIELD(China, name),        QL_FIELD(China, sex),         QL_FIELD(China, nation),
    QL_FIELD(China, birthday),    QL_FIELD(China, address),     QL_FIELD(China, cardId),
    QL_FIELD(China, police),      QL_FIELD(China, validStart),  QL_FIELD(China, validEnd),
    QL_FIELD(China, sexCode),     QL_FIELD(China, nationCode),  QL_FIELD(China, reserved),
    QL_FIELD(China, fingerData1), QL_FIELD(China, fingerData2),
};

inline constexpr Field kForeignRecord[] = {
    QL_FIELD(Foreign, name),        QL_FIELD(Foreign, EngName),  QL_FIELD(Foreign, version),
    QL_FIELD(Foreign, govCode),     QL_FIELD(Foreign, cardType), QL_FIELD(Foreign, otherData),
    QL_FIELD(Foreign, sex),         QL_FIELD(Foreign, nation),   QL_FIELD(Foreign, birthday),
    QL_FIELD(Foreign, address),     QL_FIELD(Foreign, cardId),   QL_FIELD(Foreign, police),
    QL_FIELD(Foreign, validStart),  QL_FIELD(Foreign, validEnd), QL_FIELD(Foreign, sexCode),
    QL_FIELD(Foreign, nationCode),  QL_FIELD(Foreign, reserved), QL_FIELD(Foreign, fingerData1),
    QL_FIELD(Foreign, fingerData2),
};

inline constexpr Field kGatRecord[] = {
    QL_FIELD(Gat, name),         QL_FIELD(Gat, sexCode),     QL_FIELD(Gat, sex),
    QL_FIELD(Gat, gatReserved1), QL_FIELD(Gat, birthday),    QL_FIELD(Gat, address),
    QL_FIELD(Gat, cardId),       QL_FIELD(Gat, police),      QL_FIELD(Gat, validStart),
    QL_FIELD(Gat, validEnd),     QL_FIELD(Gat, passNumber),  QL_FIELD(Gat, signTimes),
    QL_FIELD(Gat, gatReserved2), QL_FIELD(Gat, cardType),    QL_FIELD(Gat, gatReserved3),
    QL_FIELD(Gat, fingerData1),  QL_FIELD(Gat, fingerData2),
};

// `personType`, a number, is not among the text fields.
inline constexpr Field kPersonRecord[] = {
    QL_FIELD(Person, name),        QL_FIELD(Person, EngName),  QL_FIELD(Person, version),
    QL_FIELD(Person, govCode),     QL_FIELD(Person, cardType), QL_FIELD(Person, otherData),
    QL_FIELD(Person, sex),         QL_FIELD(Person, nation),   QL_FIELD(Person, birthday),
    QL_FIELD(Person, address),     QL_FIELD(Person, cardId),   QL_FIELD(Person, police),
    QL_FIELD(Person, validStart),  QL_FIELD(Person, validEnd), QL_FIELD(Person, sexCode),
    QL_FIELD(Person, nationCode),  QL_FIELD(Person, reserved), QL_FIELD(Person, fingerData1),
    QL_FIELD(Person, fingerData2),
};

inline constexpr Field kCollectRecord[] = {
    QL_FIELD(Collect, name),         QL_FIELD(Collect, EngName),
    QL_FIELD(Collect, version),      QL_FIELD(Collect, govCode),
    QL_FIELD(Collect, cardType),     QL_FIELD(Collect, otherData),
    QL_FIELD(Collect, sex),          QL_FIELD(Collect, nation),
    QL_FIELD(Collect, birthday),     QL_FIELD(Collect, address),
    QL_FIELD(Collect, cardId),       QL_FIELD(Collect, police),
    QL_FIELD(Collect, validStart),   QL_FIELD(Collect, validEnd),
    QL_FIELD(Collect, sexCode),      QL_FIELD(Collect, nationCode),
    QL_FIELD(Collect, reserved),     QL_FIELD(Collect, passNumber),
    QL_FIELD(Collect, signTimes),    QL_FIELD(Collect, gatReserved1),
    QL_FIELD(Collect, gatReserved2), QL_FIELD(Collect, gatReserved3),
    QL_FIELD(Collect, fingerData1),  QL_FIELD(Collect, fingerData2),
};

// The fields of a record without its fingerprint templates, which are the last two rows.
template <std::size_t kCount>
constexpr std::span<const Field> WithoutTemplates(const Field (&fields)[kCount]) {
  return std::span<const Field>(fields).first(kCount - 2);
}

// A field of the card text: where its UCS-2 starts, in bytes, its size, and the record's field.
struct TextField {
  std::uint8_t offset;
  std::uint8_t size;
  Field field;
};

inline constexpr int kCardTextSize = 256;

inline constexpr TextField kChinaText[] = {
    {0,   30, QL_FIELD(China, name)      },
    {30,  2,  QL_FIELD(China, sexCode)   },
    {32,  4,  QL_FIELD(China, nationCode)},
    {36,  16, QL_FIELD(China, birthday)  },
    {52,  70, QL_FIELD(China, address)   },
    {122, 36, QL_FIELD(China, cardId)    },
    {158, 30, QL_FIELD(China, police)    },
    {188, 16, QL_FIELD(China, validStart)},
    {204, 16, QL_FIELD(China, validEnd)  },
    {220, 36, QL_FIELD(China, reserved)  },
};

inline constexpr TextField kForeignText[] = {
    {0,   120, QL_FIELD(Foreign, EngName)   },
    {120, 2,   QL_FIELD(Foreign, sexCode)   },
    {122, 30,  QL_FIELD(Foreign, cardId)    },
    {152, 6,   QL_FIELD(Foreign, nationCode)},
    {158, 30,  QL_FIELD(Foreign, name)      },
    {188, 16,  QL_FIELD(Foreign, validStart)},
    {204, 16,  QL_FIELD(Foreign, validEnd)  },
    {220, 16,  QL_FIELD(Foreign, birthday)  },
    {236, 4,   QL_FIELD(Foreign, version)   },
    {240, 8,   QL_FIELD(Foreign, govCode)   },
    {248, 2,   QL_FIELD(Foreign, cardType)  },
    {250, 6,   QL_FIELD(Foreign, otherData) },
};

inline constexpr TextField kGatText[] = {
    {0,   30, QL_FIELD(Gat, name)        },
    {30,  2,  QL_FIELD(Gat, sexCode)     },
    {32,  4,  QL_FIELD(Gat, gatReserved1)},
    {36,  16, QL_FIELD(Gat, birthday)    },
    {52,  70, QL_FIELD(Gat, address)     },
    {122, 36, QL_FIELD(Gat, cardId)      },
    {158, 30, QL_FIELD(Gat, police)      },
    {188, 16, QL_FIELD(Gat, validStart)  },
    {204, 16, QL_FIELD(Gat, validEnd)    },
    {220, 18, QL_FIELD(Gat, passNumber)  },
    {238, 4,  QL_FIELD(Gat, signTimes)   },
    {242, 6,  QL_FIELD(Gat, gatReserved2)},
    {248, 2,  QL_FIELD(Gat, cardType)    },
    {250, 6,  QL_FIELD(Gat, gatReserved3)},
};

// A resident's card text in the combined record.
inline constexpr TextField kPersonText[] = {
    {0,   30, QL_FIELD(Person, name)      },
    {30,  2,  QL_FIELD(Person, sexCode)   },
    {32,  4,  QL_FIELD(Person, nationCode)},
    {36,  16, QL_FIELD(Person, birthday)  },
    {52,  70, QL_FIELD(Person, address)   },
    {122, 36, QL_FIELD(Person, cardId)    },
    {158, 30, QL_FIELD(Person, police)    },
    {188, 16, QL_FIELD(Person, validStart)},
    {204, 16, QL_FIELD(Person, validEnd)  },
    {220, 36, QL_FIELD(Person, reserved)  },
};

// Every field starts where the one before it ends, and the last ends with the card text.
template <std::size_t kCount>
consteval bool IsGapless(const TextField (&fields)[kCount], int size) {
  int end = 0;
  for (const TextField& field : fields) {
    if (field.offset != end) return false;
    end += field.size;
  }
  return end == size;
}
static_assert(IsGapless(kChinaText, kCardTextSize));
static_assert(IsGapless(kForeignText, kCardTextSize));
static_assert(IsGapless(kGatText, kCardTextSize));
static_assert(IsGapless(kPersonText, kCardTextSize));

#endif
