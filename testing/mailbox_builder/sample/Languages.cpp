#include "testing/mailbox_builder/sample/Languages.h"

#include <array>

namespace mailbox_builder {
namespace {

// The subject of each is told in English above it.
// clang-format off
constexpr std::array<Language, 12> kLanguages = {{
    // "Report on the bridge - changes".
    {.name = "German",
     .codePage = 1252,
     .locale = 1031,
     .person = "J\u00FCrgen Wei\u00DF",
     .alias = "juergen.weiss",
     .subject = "Pr\u00FCfbericht \u00FCber die Br\u00FCcke \u2013 \u00C4nderungen",
     .body =
         "Guten Tag zusammen,\r\n"
         "\r\n"
         "anbei der ge\u00E4nderte Pr\u00FCfbericht. Die Messwerte der s\u00FCdlichen Pfeiler wurden am "
         "Dienstag nachgetragen.\r\n"
         "Bitte gebt mir bis \u00FCbermorgen R\u00FCckmeldung, ob die Ma\u00DFe f\u00FCr die Gel\u00E4"
         "nder so bleiben d\u00FCrfen.\r\n"
         "\r\n"
         "Mit freundlichen Gr\u00FC\u00DFen\r\n"
         "J\u00FCrgen",
     .fileName = "Pr\u00FCfbericht S\u00FCdpfeiler.txt"},
    // "Invitation to the summer school".
    {.name = "Czech",
     .codePage = 1250,
     .locale = 1029,
     .person = "\u017Dofie Dvo\u0159\u00E1kov\u00E1",
     .alias = "zofie.dvorakova",
     .subject = "Pozv\u00E1nka na letn\u00ED \u0161kolu",
     .body =
         "Dobr\u00FD den,\r\n"
         "\r\n"
         "srde\u010Dn\u011B v\u00E1s zveme na letn\u00ED \u0161kolu, kter\u00E1 se kon\u00E1 ve druh\u00E9"
         "m \u010Dervencov\u00E9m t\u00FDdnu.\r\n"
         "Ubytov\u00E1n\u00ED je zaji\u0161t\u011Bno, p\u0159ihl\u00E1sit se m\u016F\u017Eete do konce "
         "m\u011Bs\u00EDce.\r\n"
         "\r\n"
         "S p\u0159\u00E1telsk\u00FDm pozdravem\r\n"
         "\u017Dofie",
     .fileName = "Program letn\u00ED \u0161koly.txt"},
    // "The invoice for February".
    {.name = "Turkish",
     .codePage = 1254,
     .locale = 1055,
     .person = "\u00C7i\u011Fdem Y\u0131ld\u0131z",
     .alias = "cigdem.yildiz",
     .subject = "\u015Eubat ay\u0131 faturas\u0131",
     .body =
         "Merhaba,\r\n"
         "\r\n"
         "\u015Fubat ay\u0131n\u0131n faturas\u0131n\u0131 ekte bulabilirsiniz. \u0130ki kalemde d\u00FC"
         "zeltme yapt\u0131k.\r\n"
         "Sorunuz olursa \u00F6\u011Fleden sonra ofisteyim.\r\n"
         "\r\n"
         "Sayg\u0131lar\u0131mla\r\n"
         "\u00C7i\u011Fdem",
     .fileName = "\u015Eubat faturas\u0131.txt"},
    // "Report on the third quarter".
    {.name = "Russian",
     .codePage = 1251,
     .locale = 1049,
     .person = "\u0412\u0435\u0440\u0430 \u0421\u043E\u043A\u043E\u043B\u043E\u0432\u0430",
     .alias = "vera.sokolova",
     .subject = "\u041E\u0442\u0447\u0451\u0442 \u0437\u0430 \u0442\u0440\u0435\u0442\u0438\u0439 \u043A"
               "\u0432\u0430\u0440\u0442\u0430\u043B",
     .body =
         "\u0414\u043E\u0431\u0440\u044B\u0439 \u0434\u0435\u043D\u044C, \u043A\u043E\u043B\u043B\u0435"
         "\u0433\u0438!\r\n"
         "\r\n"
         "\u0412\u043E \u0432\u043B\u043E\u0436\u0435\u043D\u0438\u0438 \u2014 \u043E\u0442\u0447\u0451"
         "\u0442 \u0437\u0430 \u0442\u0440\u0435\u0442\u0438\u0439 \u043A\u0432\u0430\u0440\u0442\u0430"
         "\u043B. \u041F\u043E\u0436\u0430\u043B\u0443\u0439\u0441\u0442\u0430, \u043F\u0440\u043E\u0432"
         "\u0435\u0440\u044C\u0442\u0435 \u0442\u0430\u0431\u043B\u0438\u0446\u0443 \u0441 \u0440\u0430"
         "\u0441\u0445\u043E\u0434\u0430\u043C\u0438 \u0434\u043E \u043F\u044F\u0442\u043D\u0438\u0446"
         "\u044B.\r\n"
         "\u0415\u0441\u043B\u0438 \u0446\u0438\u0444\u0440\u044B \u043D\u0435 \u0441\u0445\u043E\u0434"
         "\u044F\u0442\u0441\u044F, \u043D\u0430\u043F\u0438\u0448\u0438\u0442\u0435 \u043C\u043D\u0435"
         ", \u0438 \u043C\u044B \u0432\u0441\u0442\u0440\u0435\u0442\u0438\u043C\u0441\u044F \u0432 \u043F"
         "\u043E\u043D\u0435\u0434\u0435\u043B\u044C\u043D\u0438\u043A \u0443\u0442\u0440\u043E\u043C.\r\n"
         "\r\n"
         "\u0421 \u0443\u0432\u0430\u0436\u0435\u043D\u0438\u0435\u043C,\r\n"
         "\u0412\u0435\u0440\u0430",
     .fileName = "\u041E\u0442\u0447\u0451\u0442 \u0437\u0430 \u043A\u0432\u0430\u0440\u0442\u0430\u043B"
               ".txt"},
    // "Programme of the spring conference".
    {.name = "Greek",
     .codePage = 1253,
     .locale = 1032,
     .person = "\u0395\u03BB\u03AD\u03BD\u03B7 \u03A0\u03B1\u03C0\u03C0\u03AC",
     .alias = "eleni.pappa",
     .subject = "\u03A0\u03C1\u03CC\u03B3\u03C1\u03B1\u03BC\u03BC\u03B1 \u03B3\u03B9\u03B1 \u03C4\u03BF"
               " \u03C3\u03C5\u03BD\u03AD\u03B4\u03C1\u03B9\u03BF \u03C4\u03B7\u03C2 \u03AC\u03BD\u03BF"
               "\u03B9\u03BE\u03B7\u03C2",
     .body =
         "\u039A\u03B1\u03BB\u03B7\u03BC\u03AD\u03C1\u03B1 \u03C3\u03B1\u03C2,\r\n"
         "\r\n"
         "\u03C3\u03B1\u03C2 \u03C3\u03C4\u03AD\u03BB\u03BD\u03C9 \u03C4\u03BF \u03C0\u03C1\u03CC\u03B3"
         "\u03C1\u03B1\u03BC\u03BC\u03B1 \u03C4\u03BF\u03C5 \u03C3\u03C5\u03BD\u03B5\u03B4\u03C1\u03AF"
         "\u03BF\u03C5. \u0397 \u03C0\u03C1\u03CE\u03C4\u03B7 \u03C3\u03C5\u03BD\u03B5\u03B4\u03C1\u03AF"
         "\u03B1 \u03B1\u03C1\u03C7\u03AF\u03B6\u03B5\u03B9 \u03C3\u03C4\u03B9\u03C2 \u03B5\u03BD\u03BD"
         "\u03AD\u03B1 \u03BA\u03B1\u03B9 \u03BC\u03B9\u03C3\u03AE.\r\n"
         "\u03A0\u03B1\u03C1\u03B1\u03BA\u03B1\u03BB\u03CE \u03B5\u03C0\u03B9\u03B2\u03B5\u03B2\u03B1\u03B9"
         "\u03CE\u03C3\u03C4\u03B5 \u03C4\u03B7 \u03C3\u03C5\u03BC\u03BC\u03B5\u03C4\u03BF\u03C7\u03AE"
         " \u03C3\u03B1\u03C2 \u03BC\u03AD\u03C7\u03C1\u03B9 \u03C4\u03B7\u03BD \u03A4\u03B5\u03C4\u03AC"
         "\u03C1\u03C4\u03B7.\r\n"
         "\r\n"
         "\u039C\u03B5 \u03B5\u03BA\u03C4\u03AF\u03BC\u03B7\u03C3\u03B7\r\n"
         "\u0395\u03BB\u03AD\u03BD\u03B7",
     .fileName = "\u03A0\u03C1\u03CC\u03B3\u03C1\u03B1\u03BC\u03BC\u03B1.txt"},
    // "Summary of the meeting with the suppliers".
    {.name = "Hebrew",
     .codePage = 1255,
     .locale = 1037,
     .person = "\u05E0\u05D5\u05E2\u05D4 \u05DC\u05D5\u05D9",
     .alias = "noa.levi",
     .subject = "\u05E1\u05D9\u05DB\u05D5\u05DD \u05D4\u05E4\u05D2\u05D9\u05E9\u05D4 \u05E2\u05DD \u05D4"
               "\u05E1\u05E4\u05E7\u05D9\u05DD",
     .body =
         "\u05E9\u05DC\u05D5\u05DD \u05DC\u05DB\u05D5\u05DC\u05DD,\r\n"
         "\r\n"
         "\u05DE\u05E6\u05D5\u05E8\u05E3 \u05E1\u05D9\u05DB\u05D5\u05DD \u05D4\u05E4\u05D2\u05D9\u05E9"
         "\u05D4 \u05DE\u05D9\u05D5\u05DD \u05E9\u05DC\u05D9\u05E9\u05D9. \u05E1\u05D9\u05DB\u05DE\u05E0"
         "\u05D5 \u05E9\u05D4\u05DE\u05E9\u05DC\u05D5\u05D7 \u05D4\u05D1\u05D0 \u05D9\u05D2\u05D9\u05E2"
         " \u05D1\u05EA\u05D7\u05D9\u05DC\u05EA \u05D4\u05D7\u05D5\u05D3\u05E9.\r\n"
         "\u05D0\u05E0\u05D0 \u05E2\u05D1\u05E8\u05D5 \u05E2\u05DC \u05E8\u05E9\u05D9\u05DE\u05EA \u05D4"
         "\u05DE\u05E9\u05D9\u05DE\u05D5\u05EA \u05D5\u05E2\u05D3\u05DB\u05E0\u05D5 \u05D0\u05D5\u05EA"
         "\u05D9.\r\n"
         "\r\n"
         "\u05D1\u05D1\u05E8\u05DB\u05D4\r\n"
         "\u05E0\u05D5\u05E2\u05D4",
     .fileName = "\u05E1\u05D9\u05DB\u05D5\u05DD \u05E4\u05D2\u05D9\u05E9\u05D4.txt"},
    // "Schedule of next week's meetings".
    {.name = "Arabic",
     .codePage = 1256,
     .locale = 1025,
     .person = "\u0633\u0644\u0645\u0649 \u062D\u062F\u0627\u062F",
     .alias = "salma.haddad",
     .subject = "\u062C\u062F\u0648\u0644 \u0627\u062C\u062A\u0645\u0627\u0639\u0627\u062A \u0627\u0644"
               "\u0623\u0633\u0628\u0648\u0639 \u0627\u0644\u0642\u0627\u062F\u0645",
     .body =
         "\u0645\u0631\u062D\u0628\u0627 \u0628\u0627\u0644\u062C\u0645\u064A\u0639\u060C\r\n"
         "\r\n"
         "\u062A\u062C\u062F\u0648\u0646 \u0623\u062F\u0646\u0627\u0647 \u062C\u062F\u0648\u0644 \u0627"
         "\u062C\u062A\u0645\u0627\u0639\u0627\u062A \u0627\u0644\u0623\u0633\u0628\u0648\u0639 \u0627"
         "\u0644\u0642\u0627\u062F\u0645. \u064A\u0628\u062F\u0623 \u0627\u0644\u0627\u062C\u062A\u0645"
         "\u0627\u0639 \u0627\u0644\u0623\u0648\u0644 \u064A\u0648\u0645 \u0627\u0644\u0623\u062D\u062F"
         " \u0641\u064A \u0627\u0644\u062A\u0627\u0633\u0639\u0629 \u0635\u0628\u0627\u062D\u0627.\r\n"
         "\u0623\u0631\u062C\u0648 \u062A\u0623\u0643\u064A\u062F \u0627\u0644\u062D\u0636\u0648\u0631"
         " \u0642\u0628\u0644 \u0646\u0647\u0627\u064A\u0629 \u0627\u0644\u064A\u0648\u0645.\r\n"
         "\r\n"
         "\u0645\u0639 \u0627\u0644\u062A\u062D\u064A\u0629\r\n"
         "\u0633\u0644\u0645\u0649",
     .fileName = "\u062C\u062F\u0648\u0644.txt"},
    // "About next week's meeting".
    {.name = "Japanese",
     .codePage = 932,
     .locale = 1041,
     .person = "\u7530\u4E2D \u6625\u9999",
     .alias = "haruka.tanaka",
     .subject = "\u6765\u9031\u306E\u6253\u3061\u5408\u308F\u305B\u306B\u3064\u3044\u3066",
     .body =
         "\u7686\u69D8\r\n"
         "\r\n"
         "\u304A\u75B2\u308C\u69D8\u3067\u3059\u3002\u6765\u9031\u306E\u6253\u3061\u5408\u308F\u305B\u306F"
         "\u6C34\u66DC\u65E5\u306E\u5348\u5F8C\u4E8C\u6642\u304B\u3089\u3001\u4E09\u968E\u306E\u4F1A\u8B70"
         "\u5BA4\u3067\u884C\u3044\u307E\u3059\u3002\r\n"
         "\u8CC7\u6599\u306F\u524D\u65E5\u307E\u3067\u306B\u5171\u6709\u3057\u307E\u3059\u306E\u3067\u3001"
         "\u3054\u78BA\u8A8D\u3092\u304A\u9858\u3044\u3044\u305F\u3057\u307E\u3059\u3002\r\n"
         "\r\n"
         "\u7530\u4E2D",
     .fileName = "\u6253\u3061\u5408\u308F\u305B\u8CC7\u6599.txt"},
    // "About the new project's budget".
    {.name = "Simplified Chinese",
     .codePage = 936,
     .locale = 2052,
     .person = "\u9648 \u96E8",
     .alias = "yu.chen",
     .subject = "\u5173\u4E8E\u65B0\u9879\u76EE\u7684\u9884\u7B97",
     .body =
         "\u5404\u4F4D\u540C\u4E8B\uFF1A\r\n"
         "\r\n"
         "\u9644\u4EF6\u662F\u65B0\u9879\u76EE\u7684\u9884\u7B97\u8349\u6848\u3002\u8BBE\u5907\u8D39\u7528"
         "\u6BD4\u53BB\u5E74\u589E\u52A0\u4E86\u767E\u5206\u4E4B\u516B\u3002\r\n"
         "\u8BF7\u5728\u661F\u671F\u56DB\u4E4B\u524D\u628A\u610F\u89C1\u53D1\u7ED9\u6211\uFF0C\u8C22\u8C22"
         "\u3002\r\n"
         "\r\n"
         "\u9648\u96E8",
     .fileName = "\u9884\u7B97\u8349\u6848.txt"},
    // "Registration for the annual dinner".
    {.name = "Traditional Chinese",
     .codePage = 950,
     .locale = 1028,
     .person = "\u6797 \u975C\u6021",
     .alias = "jingyi.lin",
     .subject = "\u5E74\u5EA6\u805A\u9910\u5831\u540D",
     .body =
         "\u5404\u4F4D\u540C\u4EC1\uFF1A\r\n"
         "\r\n"
         "\u4ECA\u5E74\u7684\u5E74\u5EA6\u805A\u9910\u8A02\u65BC\u5341\u4E8C\u6708\u7B2C\u4E00\u500B\u661F"
         "\u671F\u4E94\u665A\u4E0A\u8209\u884C\u3002\r\n"
         "\u8ACB\u5728\u6708\u5E95\u524D\u544A\u8A34\u6211\u662F\u5426\u53C3\u52A0\uFF0C\u4EE5\u53CA\u98F2"
         "\u98DF\u4E0A\u7684\u9700\u8981\u3002\r\n"
         "\r\n"
         "\u6797\u975C\u6021",
     .fileName = "\u5831\u540D\u8868.txt"},
    // "The dates of next month's meetings".
    {.name = "Korean",
     .codePage = 949,
     .locale = 1042,
     .person = "\uAE40 \uD558\uB298",
     .alias = "haneul.kim",
     .subject = "\uB2E4\uC74C \uB2EC \uD68C\uC758 \uC77C\uC815 \uC548\uB0B4",
     .body =
         "\uC548\uB155\uD558\uC138\uC694.\r\n"
         "\r\n"
         "\uB2E4\uC74C \uB2EC \uC815\uAE30 \uD68C\uC758\uB294 \uCCAB\uC9F8 \uC8FC \uD654\uC694\uC77C \uC624"
         "\uC804 \uC5F4 \uC2DC\uC5D0 \uC5F4\uB9BD\uB2C8\uB2E4.\r\n"
         "\uC548\uAC74\uC774 \uC788\uC73C\uC2E0 \uBD84\uC740 \uC774\uBC88 \uC8FC \uAE08\uC694\uC77C\uAE4C"
         "\uC9C0 \uBCF4\uB0B4 \uC8FC\uC2DC\uAE30 \uBC14\uB78D\uB2C8\uB2E4.\r\n"
         "\r\n"
         "\uAC10\uC0AC\uD569\uB2C8\uB2E4.\r\n"
         "\uAE40\uD558\uB298",
     .fileName = "\uD68C\uC758 \uC77C\uC815.txt"},
    // "Announcement of the meeting".
    {.name = "Thai",
     .codePage = 874,
     .locale = 1054,
     .person = "\u0E21\u0E32\u0E25\u0E35 \u0E17\u0E2D\u0E07\u0E14\u0E35",
     .alias = "malee.thongdee",
     .subject = "\u0E41\u0E08\u0E49\u0E07\u0E01\u0E33\u0E2B\u0E19\u0E14\u0E01\u0E32\u0E23\u0E1B\u0E23\u0E30"
               "\u0E0A\u0E38\u0E21",
     .body =
         "\u0E40\u0E23\u0E35\u0E22\u0E19\u0E17\u0E38\u0E01\u0E17\u0E48\u0E32\u0E19\r\n"
         "\r\n"
         "\u0E01\u0E32\u0E23\u0E1B\u0E23\u0E30\u0E0A\u0E38\u0E21\u0E1B\u0E23\u0E30\u0E08\u0E33\u0E40\u0E14"
         "\u0E37\u0E2D\u0E19\u0E08\u0E30\u0E08\u0E31\u0E14\u0E02\u0E36\u0E49\u0E19\u0E43\u0E19\u0E27\u0E31"
         "\u0E19\u0E1E\u0E24\u0E2B\u0E31\u0E2A\u0E1A\u0E14\u0E35 \u0E40\u0E27\u0E25\u0E32\u0E40\u0E01\u0E49"
         "\u0E32\u0E42\u0E21\u0E07\u0E40\u0E0A\u0E49\u0E32 \u0E17\u0E35\u0E48\u0E2B\u0E49\u0E2D\u0E07\u0E1B"
         "\u0E23\u0E30\u0E0A\u0E38\u0E21\u0E0A\u0E31\u0E49\u0E19\u0E2A\u0E2D\u0E07\r\n"
         "\u0E01\u0E23\u0E38\u0E13\u0E32\u0E40\u0E15\u0E23\u0E35\u0E22\u0E21\u0E23\u0E32\u0E22\u0E07\u0E32"
         "\u0E19\u0E04\u0E27\u0E32\u0E21\u0E04\u0E37\u0E1A\u0E2B\u0E19\u0E49\u0E32\u0E21\u0E32\u0E14\u0E49"
         "\u0E27\u0E22\r\n"
         "\r\n"
         "\u0E02\u0E2D\u0E1A\u0E04\u0E38\u0E13\u0E04\u0E48\u0E30\r\n"
         "\u0E21\u0E32\u0E25\u0E35",
     .fileName = "\u0E01\u0E33\u0E2B\u0E19\u0E14\u0E01\u0E32\u0E23.txt"},
}};
// clang-format on

}  // namespace

std::span<const Language> Languages() {
    return kLanguages;
}

}  // namespace mailbox_builder
