// What a body costs: compressed RTF read and written, text and HTML taken out of RTF, text out of HTML, each against
// copying the same bytes. Bodies of one and ten megabytes, in the form that mail programs write.
#include "localmapi/rtf/CompressedRtf.h"
#include "localmapi/rtf/HtmlText.h"
#include "localmapi/rtf/RtfText.h"
#include "platform/WideText.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <string_view>

namespace {

using namespace localmapi;

constexpr std::int64_t kMega = std::int64_t{1} << 20;

ByteView ViewOf(std::string_view text) {
    return {reinterpret_cast<const std::byte*>(text.data()), text.size()};
}

// Words in no order that repeats soon, so that a compressor has work to do.
class Words {
public:
    std::string_view Next() {
        constexpr auto kWords = std::to_array<std::string_view>(
            {"message", "the",  "of",   "meeting", "attached",  "regards", "please", "find",
             "invoice", "a",    "to",   "and",     "tomorrow",  "project", "with",   "report",
             "I",       "will", "send", "you",     "questions", "order",   "2024",   "is"});
        m_state = m_state * 6'364'136'223'846'793'005ULL + 1'442'695'040'888'963'407ULL;
        return kWords[(m_state >> 33) % kWords.size()];
    }

private:
    std::uint64_t m_state = 1;
};

std::string Build(std::int64_t size, std::string_view head, std::string_view paragraph, std::string_view end,
                  std::string_view tail) {
    Words words;
    std::string text(head);
    while (static_cast<std::int64_t>(text.size()) < size) {
        text += paragraph;
        for (int i = 0; i < 40; ++i) {
            text += words.Next();
            text += ' ';
        }
        text += end;
    }
    return text += tail;
}

const std::string& Once(std::map<std::int64_t, std::string>& made, std::int64_t megabytes, auto make) {
    auto [place, isNew] = made.try_emplace(megabytes);
    if (isNew) {
        place->second = make(megabytes * kMega);
    }
    return place->second;
}

const std::string& TrueRtf(std::int64_t megabytes) {
    static std::map<std::int64_t, std::string> made;
    return Once(made, megabytes, [](std::int64_t size) {
        return Build(size,
                     "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0\\fswiss\\fcharset0 Arial;}"
                     "{\\f1\\fcharset204 Arial;}}\r\n",
                     "\\pard\\plain\\f0\\fs20 {\\b caf\\'e9} {\\f1 \\'ef\\'f0\\'e8}\\u8364 ? ", "\\par\r\n", "}");
    });
}

const std::string& HtmlInRtf(std::int64_t megabytes) {
    static std::map<std::int64_t, std::string> made;
    return Once(made, megabytes, [](std::int64_t size) {
        return Build(size,
                     "{\\rtf1\\ansi\\ansicpg1252\\fromhtml1 \\fbidi \\deff0{\\fonttbl\r\n{\\f0\\fswiss\\fcharset0 "
                     "Arial;}}\r\n\\uc1\\pard\\plain\\deftab360 \\f0\\fs24 {\\*\\htmltag18 <html>}",
                     "\r\n{\\*\\htmltag64 <p class=MsoNormal>}\\htmlrtf {\\htmlrtf0 \r\n{\\*\\htmltag148 <span "
                     "style='font-size:11.0pt;color:black'>}\\htmlrtf {\\fs22 \\htmlrtf0 ",
                     "\\lquote {\\*\\htmltag84 &nbsp;}\\htmlrtf \\'a0\\htmlrtf0 {\\*\\htmltag156 </span>}\\htmlrtf "
                     "}\\htmlrtf0 \\htmlrtf\\par}\\htmlrtf0\r\n{\\*\\htmltag72 </p>}",
                     "{\\*\\htmltag27 </html>}}");
    });
}

const std::string& Html(std::int64_t megabytes) {
    static std::map<std::int64_t, std::string> made;
    return Once(made, megabytes, [](std::int64_t size) {
        return Build(size, "<html><head><meta charset=utf-8><style>p{}</style></head><body>\r\n",
                     "<p class=MsoNormal><span style='font-size:11.0pt;color:black'>caf\xC3\xA9 &euro;&nbsp;",
                     "</span><o:p></o:p></p>\r\n", "</body></html>");
    });
}

void Report(benchmark::State& state, std::size_t size) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
}

void CopyTheBytes(benchmark::State& state) {
    const std::string& rtf = TrueRtf(state.range(0));
    std::string copy(rtf.size(), '\0');
    for ([[maybe_unused]] auto _ : state) {
        std::memcpy(copy.data(), rtf.data(), rtf.size());
        benchmark::DoNotOptimize(copy.data());
        benchmark::ClobberMemory();
    }
    Report(state, rtf.size());
}
BENCHMARK(CopyTheBytes)->ArgName("MB")->Arg(1)->Arg(10)->Unit(benchmark::kMillisecond);

// Bytes are those of the RTF, not of the value.
void DecompressRtf(benchmark::State& state) {
    const std::string& rtf = HtmlInRtf(state.range(0));
    const Bytes value = *rtf::Compress(ViewOf(rtf));
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(rtf::Decompress(value));
    }
    Report(state, rtf.size());
}
BENCHMARK(DecompressRtf)->ArgName("MB")->Arg(1)->Arg(10)->Unit(benchmark::kMillisecond);

// The same through a buffer of 4 KB, as a stream is read.
void StreamRtf(benchmark::State& state) {
    const std::string& rtf = HtmlInRtf(state.range(0));
    const Bytes value = *rtf::Compress(ViewOf(rtf));
    std::array<std::byte, 4096> piece;
    for ([[maybe_unused]] auto _ : state) {
        MemorySource source(value);
        Result<rtf::CompressedRtfReader> reader = rtf::CompressedRtfReader::Open(source);
        while (*reader->Read(piece) > 0) {
            benchmark::DoNotOptimize(piece.data());
        }
    }
    Report(state, rtf.size());
}
BENCHMARK(StreamRtf)->ArgName("MB")->Arg(1)->Arg(10)->Unit(benchmark::kMillisecond);

void CompressRtf(benchmark::State& state) {
    const std::string& rtf = HtmlInRtf(state.range(0));
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(rtf::Compress(ViewOf(rtf)));
    }
    Report(state, rtf.size());
    state.counters["part"] = static_cast<double>(rtf::Compress(ViewOf(rtf))->size()) / static_cast<double>(rtf.size());
}
BENCHMARK(CompressRtf)->ArgName("MB")->Arg(1)->Arg(10)->Unit(benchmark::kMillisecond);

void TextOfRtf(benchmark::State& state) {
    const std::string& rtf = TrueRtf(state.range(0));
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(rtf::TextOf(ViewOf(rtf)));
    }
    Report(state, rtf.size());
}
BENCHMARK(TextOfRtf)->ArgName("MB")->Arg(1)->Arg(10)->Unit(benchmark::kMillisecond);

void HtmlOfRtf(benchmark::State& state) {
    const std::string& rtf = HtmlInRtf(state.range(0));
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(rtf::HtmlOf(ViewOf(rtf)));
    }
    Report(state, rtf.size());
}
BENCHMARK(HtmlOfRtf)->ArgName("MB")->Arg(1)->Arg(10)->Unit(benchmark::kMillisecond);

void DecodeTheHtml(benchmark::State& state) {
    const std::string& html = Html(state.range(0));
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(rtf::DecodeHtml(ViewOf(html), 65001));
    }
    Report(state, html.size());
}
BENCHMARK(DecodeTheHtml)->ArgName("MB")->Arg(1)->Arg(10)->Unit(benchmark::kMillisecond);

// Bytes are those of the HTML as it was stored.
void TextOfTheHtml(benchmark::State& state) {
    const std::string& html = Html(state.range(0));
    const CStringW wide = rtf::DecodeHtml(ViewOf(html), 65001);
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(rtf::TextOfHtml(wide));
    }
    Report(state, html.size());
}
BENCHMARK(TextOfTheHtml)->ArgName("MB")->Arg(1)->Arg(10)->Unit(benchmark::kMillisecond);

// A page that keeps a naive reader searching: tags that have no end outside of their quotes.
void TextOfHostileHtml(benchmark::State& state) {
    CStringW html;
    while (static_cast<std::int64_t>(html.size()) < state.range(0) * kMega) {
        html += "<a x=\">\"<b y='&eacut"_w;
    }
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(rtf::TextOfHtml(html));
    }
    Report(state, html.size());
}
BENCHMARK(TextOfHostileHtml)->ArgName("MB")->Arg(1)->Arg(10)->Unit(benchmark::kMillisecond);

}  // namespace
