// The names as they are printed on cards and in passports, GBK inside the library. They are spelled
// out here and made GBK by the compiler.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>

#include "carddata/gbk_table.h"
#include "carddata/text.h"
#include "quillonid/carddata.h"
#include "support/log.h"

namespace {

using NationName = GbkText<20>;

// GB/T 3304: ethnic groups by number, from 1 on.
constexpr NationName kNations[] = {
    u"汉",     u"蒙古",   u"回",       u"藏",     u"维吾尔",   u"苗",   u"彝",     u"壮",
    u"布依",   u"朝鲜",   u"满",       u"侗",     u"瑶",       u"白",   u"土家",   u"哈尼",
    u"哈萨克", u"傣",     u"黎",       u"傈僳",   u"佤",       u"畲",   u"高山",   u"拉祜",
    u"水",     u"东乡",   u"纳西",     u"景颇",   u"柯尔克孜", u"土",   u"达斡尔", u"仫佬",
    u"羌",     u"布朗",   u"撒拉",     u"毛南",   u"仡佬",     u"锡伯", u"阿昌",   u"普米",
    u"塔吉克", u"怒",     u"乌孜别克", u"俄罗斯", u"鄂温克",   u"德昂", u"保安",   u"裕固",
    u"京",     u"塔塔尔", u"独龙",     u"鄂伦春", u"赫哲",     u"门巴", u"珞巴",   u"基诺",
};
static_assert(std::size(kNations) == 56);

// Two codes more that cards carry.
constexpr int kOtherCode = 97;
constexpr int kForeignBornCode = 98;
constexpr NationName kOther = u"其他";
constexpr NationName kForeignBorn = u"外国血统中国籍人士";

struct Country {
  char code[20];
  GbkText<60> name;
};
static_assert(sizeof(Country) == 80);

// ISO 3166-1 alpha-3 with codes that have been withdrawn since, in the order in which a code is
// looked up. (The formatter would pad the rows by bytes.)
// clang-format off
constexpr Country s_COUNTRY[] = {
    {"AFG", u"阿富汗"},
    {"ALB", u"阿尔巴尼亚共和国"},
    {"DZA", u"阿尔及利亚民主人民共和国"},
    {"ASM", u"美属萨摩亚"},
    {"AND", u"安道尔公国"},
    {"AGO", u"安哥拉共和国"},
    {"AIA", u"安圭拉"},
    {"ATA", u"南极洲"},
    {"ATG", u"安提瓜和巴布达"},
    {"ARG", u"阿根廷共和国"},
    {"ARM", u"亚美尼亚共和国"},
    {"ABW", u"阿鲁巴"},
    {"AUS", u"澳大利亚联邦"},
    {"AUT", u"奥地利共和国"},
    {"AZE", u"阿塞拜疆共和国"},
    {"BHS", u"巴哈马联邦"},
    {"BHR", u"巴林国"},
    {"BGD", u"孟加拉人民共和国"},
    {"BRB", u"巴巴多斯"},
    {"BLR", u"白俄罗斯共和国"},
    {"BEL", u"比利时王国"},
    {"BLZ", u"伯利兹"},
    {"BEN", u"贝宁共和国"},
    {"BMU", u"百慕大"},
    {"BTN", u"不丹王国"},
    {"BOL", u"玻利维亚共和国"},
    {"BIH", u"波斯尼亚和黑塞哥维那"},
    {"BWA", u"博茨瓦纳共和国"},
    {"BVT", u"布维岛"},
    {"BRA", u"巴西联邦共和国"},
    {"IOT", u"英属印度洋领地"},
    {"BRN", u"文莱达鲁萨兰国"},
    {"BGR", u"保加利亚共和国"},
    {"BFA", u"布基纳法索"},
    {"BDI", u"布隆迪共和国"},
    {"KHM", u"柬埔寨王国"},
    {"CMR", u"喀麦隆共和国"},
    {"CAN", u"加拿大"},
    {"CPV", u"佛得角共和国"},
    {"CYM", u"开曼群岛"},
    {"CAF", u"中非共和国"},
    {"TCD", u"乍得共和国"},
    {"CHL", u"智利共和国"},
    {"CHN", u"中华人民共和国"},
    {"HKG", u"中国香港特别行政区"},
    {"MAC", u"中国澳门特别行政区"},
    {"TWN", u"中国台湾"},
    {"CXR", u"圣诞岛"},
    {"CCK", u"科科斯(基林)群岛"},
    {"COL", u"哥伦比亚共和国"},
    {"COM", u"科摩罗伊斯兰联邦共和国"},
    {"COG", u"刚果共和国"},
    {"COD", u"刚果民主共和国"},
    {"COK", u"库克群岛"},
    {"CRI", u"哥斯达黎加共和国"},
    {"CIV", u"科特迪瓦共和国"},
    {"HRV", u"克罗地亚共和国"},
    {"CUB", u"古巴共和国"},
    {"CYP", u"塞浦路斯共和国"},
    {"CZE", u"捷克共和国"},
    {"DNK", u"丹麦王国"},
    {"DJI", u"吉布提共和国"},
    {"DMA", u"多米尼克国"},
    {"DOM", u"多米尼加共和国"},
    {"TMP", u"东帝汶"},
    {"ECU", u"厄瓜多尔共和国"},
    {"EGY", u"阿拉伯埃及共和国"},
    {"SLV", u"萨尔瓦多共和国"},
    {"GNQ", u"赤道几内亚共和国"},
    {"ERI", u"厄立特里亚国"},
    {"EST", u"爱沙尼亚共和国"},
    {"ETH", u"埃塞俄比亚联邦民主共和国"},
    {"FLK", u"福克兰群岛(马尔维纳斯)"},
    {"FRO", u"法罗群岛"},
    {"FJI", u"斐济群岛共和国"},
    {"FIN", u"芬兰共和国"},
    {"FRA", u"法兰西共和国"},
    {"GUF", u"法属圭亚那"},
    {"PYF", u"法属波利尼西亚"},
    {"ATF", u"法属南部领地"},
    {"GAB", u"加蓬共和国"},
    {"GMB", u"冈比亚共和国"},
    {"GEO", u"格鲁吉亚"},
    {"DEU", u"德意志联邦共和国"},
    {"GHA", u"加纳共和国"},
    {"GIB", u"直布罗陀"},
    {"GRC", u"希腊共和国"},
    {"GRL", u"格陵兰"},
    {"GRD", u"格林纳达"},
    {"GLP", u"瓜德罗普"},
    {"GUM", u"关岛"},
    {"GTM", u"危地马拉共和国"},
    {"GIN", u"几内亚共和国"},
    {"GNB", u"几内亚比绍共和国"},
    {"GUY", u"圭亚那合作共和国"},
    {"HTI", u"海地共和国"},
    {"HMD", u"赫德岛和麦克唐纳岛"},
    {"HND", u"洪都拉斯共和国"},
    {"HUN", u"匈牙利共和国"},
    {"ISL", u"冰岛共和国"},
    {"IND", u"印度共和国"},
    {"IDN", u"印度尼西亚共和国"},
    {"IRN", u"伊朗伊斯兰共和国"},
    {"IRQ", u"伊拉克共和国"},
    {"IRL", u"爱尔兰"},
    {"ISR", u"以色列国"},
    {"ITA", u"意大利共和国"},
    {"JAM", u"牙买加"},
    {"JPN", u"日本国"},
    {"JOR", u"约旦哈希姆王国"},
    {"KAZ", u"哈萨克斯坦共和国"},
    {"KEN", u"肯尼亚共和国"},
    {"KIR", u"基里巴斯共和国"},
    {"PRK", u"朝鲜民主主义人民共和国"},
    {"KOR", u"大韩民国"},
    {"KWT", u"科威特国"},
    {"KGZ", u"吉尔吉斯共和国"},
    {"LAO", u"老挝人民民主共和国"},
    {"LVA", u"拉脱维亚共和国"},
    {"LBN", u"黎巴嫩共和国"},
    {"LSO", u"莱索托王国"},
    {"LBR", u"利比里亚共和国"},
    {"LBY", u"大阿拉伯利比亚人民社会主义民众国"},
    {"LIE", u"列支敦士登公国"},
    {"LTU", u"立陶宛共和国"},
    {"LUX", u"卢森堡大公国"},
    {"MKD", u"前南斯拉夫马其顿共和国"},
    {"MDG", u"马达加斯加共和国"},
    {"MWI", u"马拉维共和国"},
    {"MYS", u"马来西亚"},
    {"MDV", u"马尔代夫共和国"},
    {"MLI", u"马里共和国"},
    {"MLT", u"马耳他共和国"},
    {"MHL", u"马绍尔群岛共和国"},
    {"MTQ", u"马提尼克"},
    {"MRT", u"毛里塔尼亚伊斯兰共和国"},
    {"MUS", u"毛里求斯共和国"},
    {"MYT", u"马约特"},
    {"MEX", u"墨西哥合众国"},
    {"FSM", u"密克罗尼西亚联邦"},
    {"MDA", u"摩尔多瓦共和国"},
    {"MCO", u"摩纳哥公国"},
    {"MNG", u"蒙古国"},
    {"MSR", u"蒙特塞拉特"},
    {"MAR", u"摩洛哥王国"},
    {"MOZ", u"莫桑比克共和国"},
    {"MMR", u"缅甸联邦"},
    {"NAM", u"纳米比亚共和国"},
    {"NRU", u"瑙鲁共和国"},
    {"NPL", u"尼泊尔王国"},
    {"NLD", u"荷兰王国"},
    {"ANT", u"荷属安的列斯"},
    {"NCL", u"新喀里多尼亚"},
    {"NZL", u"新西兰"},
    {"NIC", u"尼加拉瓜共和国"},
    {"NER", u"尼日尔共和国"},
    {"NGA", u"尼日利亚联邦共和国"},
    {"NIU", u"纽埃"},
    {"NFK", u"诺福克岛"},
    {"MNP", u"北马里亚纳自由联邦"},
    {"NOR", u"挪威王国"},
    {"OMN", u"阿曼苏丹国"},
    {"PAK", u"巴基斯坦伊斯兰共和国"},
    {"PLW", u"帕劳共和国"},
    {"PSE", u"巴勒斯坦国"},
    {"PAN", u"巴拿马共和国"},
    {"PNG", u"巴布亚新几内亚独立国"},
    {"PRY", u"巴拉圭共和国"},
    {"PER", u"秘鲁共和国"},
    {"PHL", u"菲律宾共和国"},
    {"PCN", u"皮特凯恩"},
    {"POL", u"波兰共和国"},
    {"PRT", u"葡萄牙共和国"},
    {"PRI", u"波多黎各"},
    {"QAT", u"卡塔尔国"},
    {"REU", u"留尼汪"},
    {"ROM", u"罗马尼亚"},
    {"RUS", u"俄罗斯联邦"},
    {"RWA", u"卢旺达共和国"},
    {"SHN", u"圣赫勒拿"},
    {"KNA", u"圣基茨和尼维斯联邦"},
    {"LCA", u"圣卢西亚"},
    {"SPM", u"圣皮埃尔和密克隆"},
    {"VCT", u"圣文森特和格林纳丁斯"},
    {"WSM", u"萨摩亚独立国"},
    {"SMR", u"圣马力诺共和国"},
    {"STP", u"圣多美和普林西比民主共和国"},
    {"SAU", u"沙特阿拉伯王国"},
    {"SEN", u"塞内加尔共和国"},
    {"SYC", u"塞舌尔共和国"},
    {"SLE", u"塞拉利昂共和国"},
    {"SGP", u"新加坡共和国"},
    {"SVK", u"斯洛伐克共和国"},
    {"SVN", u"斯洛文尼亚共和国"},
    {"SLB", u"所罗门群岛"},
    {"SOM", u"索马里共和国"},
    {"ZAF", u"南非共和国"},
    {"SGS", u"南乔治亚岛和南桑德韦奇岛"},
    {"ESP", u"西班牙王国"},
    {"LKA", u"斯里兰卡民主社会主义共和国"},
    {"SDN", u"苏丹共和国"},
    {"SUR", u"苏里南共和国"},
    {"SJM", u"斯瓦尔巴岛和扬马延岛"},
    {"SWZ", u"斯威士兰王国"},
    {"SWE", u"瑞典王国"},
    {"CHE", u"瑞士联邦"},
    {"SYR", u"阿拉伯叙利亚共和国"},
    {"TJK", u"塔吉克斯坦共和国"},
    {"TZA", u"坦桑尼亚联合共和国"},
    {"THA", u"泰王国"},
    {"TGO", u"多哥共和国"},
    {"TKL", u"托克劳"},
    {"TON", u"汤加王国"},
    {"TTO", u"特立尼达和多巴哥共和国"},
    {"TUN", u"突尼斯共和国"},
    {"TUR", u"土耳其共和国"},
    {"TKM", u"土库曼斯坦"},
    {"TCA", u"特克斯和凯科斯群岛"},
    {"TUV", u"图瓦卢"},
    {"UGA", u"乌干达共和国"},
    {"UKR", u"乌克兰"},
    {"ARE", u"阿拉伯联合酋长国"},
    {"GBR", u"大不列颠及北爱尔兰联合王国"},
    {"USA", u"美利坚合众国"},
    {"UMI", u"美国本土外小岛屿"},
    {"URY", u"乌拉圭东岸共和国"},
    {"UZB", u"乌兹别克斯坦共和国"},
    {"VUT", u"瓦努阿图共和国"},
    {"VAT", u"梵蒂冈城国"},
    {"VEN", u"委内瑞拉共和国"},
    {"VNM", u"越南社会主义共和国"},
    {"VGB", u"英属维尔京群岛"},
    {"VIR", u"美属维尔京群岛"},
    {"WLF", u"瓦利斯和富图纳"},
    {"ESH", u"西撒哈拉"},
    {"YEM", u"也门共和国"},
    {"YUG", u"南斯拉夫联盟共和国"},
    {"ZMB", u"赞比亚共和国"},
    {"ZWE", u"津巴布韦共和国"},
};
// clang-format on
static_assert(std::size(s_COUNTRY) == 239);

// Three letters as one number. A shorter text gives no code of the table: all have three.
constexpr std::uint32_t Key(const char* code) {
  std::uint32_t key = 0;
  for (int i = 0; i < 3 && code[i] != '\0'; ++i) {
    key = key << 8 | static_cast<unsigned char>(code[i]);
  }
  return key;
}

// The codes in order, each with its row, so that a look-up does not walk over the names.
constexpr auto CountryKeys() {
  std::array<std::uint32_t, std::size(s_COUNTRY)> keys = {};
  for (std::uint32_t row = 0; row < keys.size(); ++row)
    keys[row] = Key(s_COUNTRY[row].code) << 8 | row;
  std::sort(keys.begin(), keys.end());
  return keys;
}
constexpr auto kCountryKeys = CountryKeys();

// Row of the first country with this code, or -1.
int FindCountry(const char* code) {
  const std::uint32_t key = Key(code);
  const auto* const found = std::lower_bound(kCountryKeys.begin(), kCountryKeys.end(), key << 8);
  return found != kCountryKeys.end() && *found >> 8 == key ? static_cast<int>(*found & 0xFF) : -1;
}

const NationName* FindNation(int code) {
  if (code >= 1 && code <= static_cast<int>(std::size(kNations))) return &kNations[code - 1];
  if (code == kOtherCode) return &kOther;
  if (code == kForeignBornCode) return &kForeignBorn;
  return nullptr;
}

// Length of `text` cut to `limit` bytes without cutting a character of it.
std::size_t WholeCharacters(const char* text, std::size_t limit) {
  std::size_t length = strnlen(text, limit);
  const auto continues = [](char byte) { return (byte & 0xC0) == 0x80; };
  if (text[length] == '\0') return length;
  while (length > 0 && continues(text[length])) --length;
  return length;
}

}  // namespace

void GetNation(int code, char* dest, int limit) {
  LOG_CARD("[%s] Start ", __func__);
  if (dest == nullptr || limit < 1) return;
  char name[64] = {};
  if (const NationName* const nation = FindNation(code)) {
    GBKToUTF8(nation->bytes, name, sizeof name - kUtf8Overshoot);
  }
  const std::size_t length = WholeCharacters(name, static_cast<std::size_t>(limit) - 1);
  std::memcpy(dest, name, length);
  dest[length] = '\0';
}

void GetCountry(const char* code, char* dest) {
  LOG_CARD("[%s] Start ", __func__);
  if (code == nullptr || dest == nullptr) return;
  const int row = FindCountry(code);
  if (row < 0) return;

  char name[128 + kUtf8Overshoot];
  GBKToUTF8(s_COUNTRY[row].name.bytes, name, 128);
  LOG_CARD("nIndex = %d szCountry = %s ", row, name);
  std::copy_n(name, std::strlen(name), dest);  // On purpose: without a terminating zero.
}
