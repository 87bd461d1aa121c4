// Decoding and escaping about 1 MB of text value, beside a plain copy of the same text and beside
// the plain character-by-character loops that applications write for the same job.
#include "lorvane/uLxXMLUtils.h"
#include "support/Ratios.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <unordered_map>

namespace {

using namespace lorvane;

constexpr std::size_t TextUnits = 512u * 1024; // 1 MiB of UTF-16

// Prose without '&' and with a little non-ASCII, as element text mostly is.
const UnicodeString& PlainText() {
  static const UnicodeString Text = [] {
    const UnicodeString Piece =
        u"The quick brown fox jumps over the lazy dog; caf\u00e9 na\u00efve. ";
    UnicodeString S;
    S.reserve(TextUnits);
    while (S.size() + Piece.size() <= TextUnits)
      S += Piece;
    S.resize(TextUnits, u'x');
    return S;
  }();
  return Text;
}

// The same prose with a reference about every 100 characters.
const UnicodeString& TextWithReferences() {
  static const UnicodeString Text = [] {
    const std::u16string_view References[] = {u"&amp;",    u"&lt;b&gt;", u"&#233;",
                                              u"&eacute;", u"&quot;",    u"&#x20AC;"};
    UnicodeString S;
    S.reserve(TextUnits + TextUnits / 10);
    std::size_t Next = 0;
    while (S.size() < TextUnits) {
      S.append(PlainText(), S.size() % 1000, 100);
      S += References[Next++ % std::size(References)];
    }
    return S;
  }();
  return Text;
}

// Prose with a character to escape about every 200 characters.
const UnicodeString& TextToEscape() {
  static const UnicodeString Text = [] {
    UnicodeString S = PlainText();
    const char16_t Specials[] = {u'<', u'>', u'&', u'"', u'\'', u'\n'};
    for (std::size_t I = 150, N = 0; I < S.size(); I += 200, ++N)
      S[I] = Specials[N % std::size(Specials)];
    return S;
  }();
  return Text;
}

const std::string& PlainBytes() {
  static const std::string Text = StringToUTF8(PlainText());
  return Text;
}

// --- the plain loops applications write
// -------------------------------------------------------------------------------
UnicodeString NaiveDecode(const UnicodeString& AText) {
  static const std::unordered_map<UnicodeString, char16_t> Names = {
      {u"amp", u'&'},  {u"lt", u'<'},    {u"gt", u'>'},
      {u"quot", u'"'}, {u"apos", u'\''}, {u"eacute", 0xE9}};
  UnicodeString Result;
  for (std::size_t I = 0; I < AText.size(); ++I) {
    if (AText[I] == u'&') {
      const std::size_t Semi = AText.find(u';', I);
      if (Semi != UnicodeString::npos) {
        const UnicodeString Name = AText.substr(I + 1, Semi - I - 1);
        if (!Name.empty() && Name[0] == u'#') {
          const std::string Digits = StringToUTF8(Name.substr(Name[1] == u'x' ? 2 : 1));
          Result += static_cast<char16_t>(
              std::strtol(Digits.c_str(), nullptr, Name[1] == u'x' ? 16 : 10));
          I = Semi;
          continue;
        }
        if (auto Found = Names.find(Name); Found != Names.end()) {
          Result += Found->second;
          I = Semi;
          continue;
        }
      }
    }
    Result += AText[I];
  }
  return Result;
}

UnicodeString NaiveEscape(const UnicodeString& AText) {
  UnicodeString Result;
  for (char16_t C : AText) {
    switch (C) {
    case u'<':
      Result += u"&lt;";
      break;
    case u'>':
      Result += u"&gt;";
      break;
    case u'&':
      Result += u"&amp;";
      break;
    case u'\'':
      Result += u"&apos;";
      break;
    case u'"':
      Result += u"&quot;";
      break;
    default:
      if (C > 0 && C < 32) {
        Result += u"&#";
        Result += AsciiToString(std::to_string(int(C)));
        Result += u';';
      } else if (C != 0) {
        Result += C;
      }
    }
  }
  return Result;
}

// --- benchmarks
// -----------------------------------------------------------------------------------
void Measure(benchmark::State& AState, std::size_t ABytes) {
  AState.SetBytesProcessed(Int64(AState.iterations()) * Int64(ABytes));
}

void Lorvane_XMLToStr_NoReferences(benchmark::State& AState) {
  for (auto _ : AState) {
    UnicodeString Result = LxXMLToStr(PlainText());
    benchmark::DoNotOptimize(Result.data());
  }
  Measure(AState, PlainText().size() * 2);
}

void Rival_Copy(benchmark::State& AState) {
  for (auto _ : AState) {
    UnicodeString Result = PlainText();
    benchmark::DoNotOptimize(Result.data());
  }
  Measure(AState, PlainText().size() * 2);
}

void Lorvane_XMLToStr_SomeReferences(benchmark::State& AState) {
  for (auto _ : AState) {
    UnicodeString Result = LxXMLToStr(TextWithReferences());
    benchmark::DoNotOptimize(Result.data());
  }
  Measure(AState, TextWithReferences().size() * 2);
}

void Rival_NaiveDecode_SomeReferences(benchmark::State& AState) {
  for (auto _ : AState) {
    UnicodeString Result = NaiveDecode(TextWithReferences());
    benchmark::DoNotOptimize(Result.data());
  }
  Measure(AState, TextWithReferences().size() * 2);
}

void Rival_Copy_SomeReferences(benchmark::State& AState) {
  for (auto _ : AState) {
    UnicodeString Result = TextWithReferences();
    benchmark::DoNotOptimize(Result.data());
  }
  Measure(AState, TextWithReferences().size() * 2);
}

void Lorvane_StrToXML_FewEscapes(benchmark::State& AState) {
  for (auto _ : AState) {
    UnicodeString Result = LxStrToXML(TextToEscape(), true, true);
    benchmark::DoNotOptimize(Result.data());
  }
  Measure(AState, TextToEscape().size() * 2);
}

void Rival_NaiveEscape_FewEscapes(benchmark::State& AState) {
  for (auto _ : AState) {
    UnicodeString Result = NaiveEscape(TextToEscape());
    benchmark::DoNotOptimize(Result.data());
  }
  Measure(AState, TextToEscape().size() * 2);
}

void Lorvane_XMLToStr_Bytes_NoReferences(benchmark::State& AState) {
  for (auto _ : AState) {
    RawByteString Result = LxXMLToStr(PlainBytes());
    benchmark::DoNotOptimize(Result.data());
  }
  Measure(AState, PlainBytes().size());
}

void Rival_Copy_Bytes(benchmark::State& AState) {
  for (auto _ : AState) {
    RawByteString Result = PlainBytes();
    benchmark::DoNotOptimize(Result.data());
  }
  Measure(AState, PlainBytes().size());
}

BENCHMARK(Lorvane_XMLToStr_NoReferences)->Unit(benchmark::kMicrosecond);
BENCHMARK(Rival_Copy)->Unit(benchmark::kMicrosecond);
BENCHMARK(Lorvane_XMLToStr_SomeReferences)->Unit(benchmark::kMicrosecond);
BENCHMARK(Rival_NaiveDecode_SomeReferences)->Unit(benchmark::kMicrosecond);
BENCHMARK(Rival_Copy_SomeReferences)->Unit(benchmark::kMicrosecond);
BENCHMARK(Lorvane_StrToXML_FewEscapes)->Unit(benchmark::kMicrosecond);
BENCHMARK(Rival_NaiveEscape_FewEscapes)->Unit(benchmark::kMicrosecond);
BENCHMARK(Lorvane_XMLToStr_Bytes_NoReferences)->Unit(benchmark::kMicrosecond);
BENCHMARK(Rival_Copy_Bytes)->Unit(benchmark::kMicrosecond);

// A rival's time counts only if it does the same work.
bool RivalsAgree() {
  const bool DecodeAgrees = NaiveDecode(TextWithReferences()) == LxXMLToStr(TextWithReferences());
  const bool EscapeAgrees = NaiveEscape(TextToEscape()) == LxStrToXML(TextToEscape(), true, true);
  if (!DecodeAgrees)
    std::fprintf(stderr, "the plain decoder's result differs from LxXMLToStr's\n");
  if (!EscapeAgrees)
    std::fprintf(stderr, "the plain escaper's result differs from LxStrToXML's\n");
  return DecodeAgrees && EscapeAgrees;
}

} // namespace

int main(int argc, char** argv) {
  if (!RivalsAgree())
    return 1;
  return lorvane::bench::RunWithRatios(
      argc, argv,
      {{"Lorvane_XMLToStr_NoReferences", "Rival_Copy"},
       {"Lorvane_XMLToStr_SomeReferences", "Rival_NaiveDecode_SomeReferences"},
       {"Lorvane_XMLToStr_SomeReferences", "Rival_Copy_SomeReferences"},
       {"Lorvane_StrToXML_FewEscapes", "Rival_NaiveEscape_FewEscapes"},
       {"Lorvane_StrToXML_FewEscapes", "Rival_Copy"},
       {"Lorvane_XMLToStr_Bytes_NoReferences", "Rival_Copy_Bytes"}});
}
