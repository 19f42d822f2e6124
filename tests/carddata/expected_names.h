// The names that the tables must hold, in their order, as plain lists.
#ifndef QUILLONID_TESTS_CARDDATA_EXPECTED_NAMES_H
#define QUILLONID_TESTS_CARDDATA_EXPECTED_NAMES_H

#include <sstream>
#include <string>
#include <vector>

// GB/T 3304 codes 01 to 56.
inline constexpr char kExpectedNations[] = R"(
01 汉; 02 蒙古; 03 回; 04 藏; 05 维吾尔; 06 苗; 07 彝; 08 壮; 09 布依; 10 朝鲜; 11 满; 12 侗;
13 瑶; 14 白; 15 土家; 16 哈尼; 17 哈萨克; 18 傣; 19 黎; 20 傈僳; 21 佤; 22 畲; 23 高山;
24 拉祜; 25 水; 26 东乡; 27 纳西; 28 景颇; 29 柯尔克孜; 30 土; 31 达斡尔; 32 仫佬; 33 羌;
34 布朗; 35 撒拉; 36 毛南; 37 仡佬; 38 锡伯; 39 阿昌; 40 普米; 41 塔吉克; 42 怒; 43 乌孜别克;
44 俄罗斯; 45 鄂温克; 46 德昂; 47 保安; 48 裕固; 49 京; 50 塔塔尔; 51 独龙; 52 鄂伦春; 53 赫哲;
54 门巴; 55 珞巴; 56 基诺
)";

// ISO 3166-1 alpha-3.
inline constexpr char kExpectedCountries[] = R"(
AFG 阿富汗; ALB 阿尔巴尼亚共和国; DZA 阿尔及利亚民主人民共和国; ASM 美属萨摩亚; AND 安道尔公国;
AGO 安哥拉共和国; AIA 安圭拉; ATA 南极洲; ATG 安提瓜和巴布达; ARG 阿根廷共和国;
ARM 亚美尼亚共和国; ABW 阿鲁巴; AUS 澳大利亚联邦; AUT 奥地利共和国; AZE 阿塞拜疆共和国;
BHS 巴哈马联邦; BHR 巴林国; BGD 孟加拉人民共和国; BRB 巴巴多斯; BLR 白俄罗斯共和国;
BEL 比利时王国; BLZ 伯利兹; BEN 贝宁共和国; BMU 百慕大; BTN 不丹王国; BOL 玻利维亚共和国;
BIH 波斯尼亚和黑塞哥维那; BWA 博茨瓦纳共和国; BVT 布维岛; BRA 巴西联邦共和国;
IOT 英属印度洋领地; BRN 文莱达鲁萨兰国; BGR 保加利亚共和国; BFA 布基纳法索; BDI 布隆迪共和国;
KHM 柬埔寨王国; CMR 喀麦隆共和国; CAN 加拿大; CPV 佛得角共和国; CYM 开曼群岛; CAF 中非共和国;
TCD 乍得共和国; CHL 智利共和国; CHN 中华人民共和国; HKG 中国香港特别行政区;
MAC 中国澳门特别行政区; TWN 中国台湾; CXR 圣诞岛; CCK 科科斯(基林)群岛; COL 哥伦比亚共和国;
COM 科摩罗伊斯兰联邦共和国; COG 刚果共和国; COD 刚果民主共和国; COK 库克群岛;
CRI 哥斯达黎加共和国; CIV 科特迪瓦共和国; HRV 克罗地亚共和国; CUB 古巴共和国;
CYP 塞浦路斯共和国; CZE 捷克共和国; DNK 丹麦王国; DJI 吉布提共和国; DMA 多米尼克国;
DOM 多米尼加共和国; TMP 东帝汶; ECU 厄瓜多尔共和国; EGY 阿拉伯埃及共和国; SLV 萨尔瓦多共和国;
GNQ 赤道几内亚共和国; ERI 厄立特里亚国; EST 爱沙尼亚共和国; ETH 埃塞俄比亚联邦民主共和国;
FLK 福克兰群岛(马尔维纳斯); FRO 法罗群岛; FJI 斐济群岛共和国; FIN 芬兰共和国; FRA 法兰西共和国;
GUF 法属圭亚那; PYF 法属波利尼西亚; ATF 法属南部领地; GAB 加蓬共和国; GMB 冈比亚共和国;
GEO 格鲁吉亚; DEU 德意志联邦共和国; GHA 加纳共和国; GIB 直布罗陀; GRC 希腊共和国; GRL 格陵兰;
GRD 格林纳达; GLP 瓜德罗普; GUM 关岛; GTM 危地马拉共和国; GIN 几内亚共和国;
GNB 几内亚比绍共和国; GUY 圭亚那合作共和国; HTI 海地共和国; HMD 赫德岛和麦克唐纳岛;
HND 洪都拉斯共和国; HUN 匈牙利共和国; ISL 冰岛共和国; IND 印度共和国; IDN 印度尼西亚共和国;
IRN 伊朗伊斯兰共和国; IRQ 伊拉克共和国; IRL 爱尔兰; ISR 以色列国; ITA 意大利共和国; JAM 牙买加;
JPN 日本国; JOR 约旦哈希姆王国; KAZ 哈萨克斯坦共和国; KEN 肯尼亚共和国; KIR 基里巴斯共和国;
PRK 朝鲜民主主义人民共和国; KOR 大韩民国; KWT 科威特国; KGZ 吉尔吉斯共和国;
LAO 老挝人民民主共和国; LVA 拉脱维亚共和国; LBN 黎巴嫩共和国; LSO 莱索托王国;
LBR 利比里亚共和国; LBY 大阿拉伯利比亚人民社会主义民众国; LIE 列支敦士登公国; LTU 立陶宛共和国;
LUX 卢森堡大公国; MKD 前南斯拉夫马其顿共和国; MDG 马达加斯加共和国; MWI 马拉维共和国;
MYS 马来西亚; MDV 马尔代夫共和国; MLI 马里共和国; MLT 马耳他共和国; MHL 马绍尔群岛共和国;
MTQ 马提尼克; MRT 毛里塔尼亚伊斯兰共和国; MUS 毛里求斯共和国; MYT 马约特; MEX 墨西哥合众国;
FSM 密克罗尼西亚联邦; MDA 摩尔多瓦共和国; MCO 摩纳哥公国; MNG 蒙古国; MSR 蒙特塞拉特;
MAR 摩洛哥王国; MOZ 莫桑比克共和国; MMR 缅甸联邦; NAM 纳米比亚共和国; NRU 瑙鲁共和国;
NPL 尼泊尔王国; NLD 荷兰王国; ANT 荷属安的列斯; NCL 新喀里多尼亚; NZL 新西兰;
NIC 尼加拉瓜共和国; NER 尼日尔共和国; NGA 尼日利亚联邦共和国; NIU 纽埃; NFK 诺福克岛;
MNP 北马里亚纳自由联邦; NOR 挪威王国; OMN 阿曼苏丹国; PAK 巴基斯坦伊斯兰共和国; PLW 帕劳共和国;
PSE 巴勒斯坦国; PAN 巴拿马共和国; PNG 巴布亚新几内亚独立国; PRY 巴拉圭共和国; PER 秘鲁共和国;
PHL 菲律宾共和国; PCN 皮特凯恩; POL 波兰共和国; PRT 葡萄牙共和国; PRI 波多黎各; QAT 卡塔尔国;
REU 留尼汪; ROM 罗马尼亚; RUS 俄罗斯联邦; RWA 卢旺达共和国; SHN 圣赫勒拿;
KNA 圣基茨和尼维斯联邦; LCA 圣卢西亚; SPM 圣皮埃尔和密克隆; VCT 圣文森特和格林纳丁斯;
WSM 萨摩亚独立国; SMR 圣马力诺共和国; STP 圣多美和普林西比民主共和国; SAU 沙特阿拉伯王国;
SEN 塞内加尔共和国; SYC 塞舌尔共和国; SLE 塞拉利昂共和国; SGP 新加坡共和国; SVK 斯洛伐克共和国;
SVN 斯洛文尼亚共和国; SLB 所罗门群岛; SOM 索马里共和国; ZAF 南非共和国;
SGS 南乔治亚岛和南桑德韦奇岛; ESP 西班牙王国; LKA 斯里兰卡民主社会主义共和国; SDN 苏丹共和国;
SUR 苏里南共和国; SJM 斯瓦尔巴岛和扬马延岛; SWZ 斯威士兰王国; SWE 瑞典王国; CHE 瑞士联邦;
SYR 阿拉伯叙利亚共和国; TJK 塔吉克斯坦共和国; TZA 坦桑尼亚联合共和国; THA 泰王国;
TGO 多哥共和国; TKL 托克劳; TON 汤加王国; TTO 特立尼达和多巴哥共和国; TUN 突尼斯共和国;
TUR 土耳其共和国; TKM 土库曼斯坦; TCA 特克斯和凯科斯群岛; TUV 图瓦卢; UGA 乌干达共和国;
UKR 乌克兰; ARE 阿拉伯联合酋长国; GBR 大不列颠及北爱尔兰联合王国; USA 美利坚合众国;
UMI 美国本土外小岛屿; URY 乌拉圭东岸共和国; UZB 乌兹别克斯坦共和国; VUT 瓦努阿图共和国;
VAT 梵蒂冈城国; VEN 委内瑞拉共和国; VNM 越南社会主义共和国; VGB 英属维尔京群岛;
VIR 美属维尔京群岛; WLF 瓦利斯和富图纳; ESH 西撒哈拉; YEM 也门共和国; YUG 南斯拉夫联盟共和国;
ZMB 赞比亚共和国; ZWE 津巴布韦共和国
)";

struct Name {
  std::string code;
  std::string text;
};

// A list taken apart: "01 汉; 02 ...".
inline std::vector<Name> NamesOf(const char* list) {
  std::vector<Name> names;
  std::istringstream stream(list);
  for (Name name; stream >> name.code && std::getline(stream >> std::ws, name.text, ';');) {
    name.text.erase(name.text.find_last_not_of('\n') + 1);
    names.push_back(name);
  }
  return names;
}

#endif
