// Skipping to a delimiter over 16 MB in each character set, beside memchr and a plain 16-bit
// loop on the same bytes, and reading character by character.
#include "lorvane/core/LxTextParser.h"
#include "lorvane/platform/CodePages.h"
#include "support/Ratios.h"

#include <cstring>
#include <string>

namespace {

using namespace lorvane;

constexpr std::size_t TextBytes = 16u << 20;

// Markup-like text without '<', ending in one '<'. UTF-8 gets a two-byte letter every 16 bytes.
const std::string& Utf8Text() {
  static const std::string Text = [] {
    std::string S;
    S.reserve(TextBytes);
    const char Piece[] = "lorem ipsum d\xC3\xA9 ";
    while (S.size() + sizeof Piece < TextBytes)
      S += Piece;
    S.resize(TextBytes - 1, 'x');
    S += '<';
    return S;
  }();
  return Text;
}

const std::string& AnsiText() {
  static const std::string Text = [] {
    std::string S(TextBytes - 1, 'a');
    for (std::size_t I = 0; I < S.size(); I += 7)
      S[I] = static_cast<char>(0xE9);
    S += '<';
    return S;
  }();
  return Text;
}

const std::u16string& WideText() {
  static const std::u16string Text = [] {
    std::u16string S(TextBytes / 2 - 1, u'a');
    for (std::size_t I = 0; I < S.size(); I += 5)
      S[I] = u'\u0416';
    S += u'<';
    return S;
  }();
  return Text;
}

void SkipOnce(benchmark::State& AState, const void* AData, std::size_t ASize, Word ACodePage) {
  for (auto _ : AState) {
    TOwned<TLxTextParser> P(New<TLxTextParser>(AData, Int64(ASize), ACodePage));
    P->SkipWhile(spNotEqual, u'<');
    if (P->GetPosition() != Int64(ASize) - (ACodePage == CP_UTF16LE ? 2 : 1))
      AState.SkipWithError("skip stopped in the wrong place");
  }
  AState.SetBytesProcessed(Int64(AState.iterations()) * Int64(ASize));
}

void Lorvane_Skip_UTF8(benchmark::State& S) {
  SkipOnce(S, Utf8Text().data(), Utf8Text().size(), CP_UTF8);
}
void Lorvane_Skip_Ansi1252(benchmark::State& S) {
  SkipOnce(S, AnsiText().data(), AnsiText().size(), 1252);
}
void Lorvane_Skip_UTF16(benchmark::State& S) {
  SkipOnce(S, WideText().data(), WideText().size() * 2, CP_UTF16LE);
}

void Memchr(benchmark::State& AState, const std::string& AText) {
  for (auto _ : AState) {
    const void* Found = std::memchr(AText.data(), '<', AText.size());
    benchmark::DoNotOptimize(Found);
  }
  AState.SetBytesProcessed(Int64(AState.iterations()) * Int64(AText.size()));
}
void Rival_Memchr_UTF8(benchmark::State& S) { Memchr(S, Utf8Text()); }
void Rival_Memchr_Ansi1252(benchmark::State& S) { Memchr(S, AnsiText()); }

void Rival_Loop16_UTF16(benchmark::State& AState) {
  const std::u16string& Text = WideText();
  for (auto _ : AState) {
    std::size_t I = 0;
    while (I < Text.size() && Text[I] != u'<')
      ++I;
    benchmark::DoNotOptimize(I);
  }
  AState.SetBytesProcessed(Int64(AState.iterations()) * Int64(Text.size() * 2));
}

// A stream that isn't memory to the parser, so that its buffer is refilled block by block.
class TBytesStream : public TStream {
  LX_CLASS(TBytesStream, TStream)
  explicit TBytesStream(const std::string& ABytes) : FBytes(ABytes) {}
  Int64 Read(void* ABuffer, Int64 ACount) override {
    const Int64 Count = std::min<Int64>(ACount, Int64(FBytes.size()) - FPosition);
    std::memcpy(ABuffer, FBytes.data() + FPosition, std::size_t(Count));
    FPosition += Count;
    return Count;
  }
  Int64 Write(const void*, Int64) override { return 0; }
  Int64 Seek(Int64 AOffset, TSeekOrigin AOrigin) override {
    FPosition = AOrigin == soBeginning ? AOffset
                : AOrigin == soCurrent ? FPosition + AOffset
                                       : Int64(FBytes.size()) + AOffset;
    return FPosition;
  }

protected:
  ~TBytesStream() override = default;

private:
  const std::string& FBytes;
  Int64 FPosition = 0;
};

// The same skip through such a stream: block refills and line counting.
void Lorvane_Skip_UTF8_Stream(benchmark::State& AState) {
  TOwned<TBytesStream> Stream(New<TBytesStream>(Utf8Text()));
  for (auto _ : AState) {
    Stream->SetPosition(0);
    TOwned<TLxTextParser> P(New<TLxTextParser>(Stream.get(), /*AStreamOwner=*/false, CP_UTF8));
    P->SkipWhile(spNotEqual, u'<');
    benchmark::DoNotOptimize(P->GetPosition());
  }
  AState.SetBytesProcessed(Int64(AState.iterations()) * Int64(Utf8Text().size()));
}

// The plain way through the same stream: read blocks, memchr each.
void Rival_ReadMemchr_UTF8_Stream(benchmark::State& AState) {
  TOwned<TBytesStream> Stream(New<TBytesStream>(Utf8Text()));
  std::string Block(64 * 1024, '\0');
  for (auto _ : AState) {
    Stream->SetPosition(0);
    Int64 Got;
    while ((Got = Stream->Read(Block.data(), Int64(Block.size()))) > 0)
      if (std::memchr(Block.data(), '<', std::size_t(Got)))
        break;
  }
  AState.SetBytesProcessed(Int64(AState.iterations()) * Int64(Utf8Text().size()));
}

// Character by character, beside a plain loop that decodes UTF-8 into code points.
void Lorvane_ReadCharW_UTF8(benchmark::State& AState) {
  const std::string& Text = Utf8Text();
  for (auto _ : AState) {
    TOwned<TLxTextParser> P(New<TLxTextParser>(Text.data(), Int64(Text.size()), CP_UTF8));
    unsigned Sum = 0;
    while (!P->_GetEOF())
      Sum += P->ReadCharW();
    benchmark::DoNotOptimize(Sum);
  }
  AState.SetBytesProcessed(Int64(AState.iterations()) * Int64(Text.size()));
}

void Rival_DecodeLoop_UTF8(benchmark::State& AState) {
  const std::string& Text = Utf8Text();
  for (auto _ : AState) {
    unsigned Sum = 0;
    const auto* P = reinterpret_cast<const unsigned char*>(Text.data());
    const auto* End = P + Text.size();
    while (P < End) {
      unsigned C = *P;
      if (C < 0x80) {
        ++P;
      } else if (C < 0xE0 && End - P >= 2) {
        C = ((C & 0x1F) << 6) | (P[1] & 0x3F);
        P += 2;
      } else if (C < 0xF0 && End - P >= 3) {
        C = ((C & 0x0F) << 12) | ((P[1] & 0x3F) << 6) | (P[2] & 0x3F);
        P += 3;
      } else {
        ++P;
      }
      Sum += C;
    }
    benchmark::DoNotOptimize(Sum);
  }
  AState.SetBytesProcessed(Int64(AState.iterations()) * Int64(Text.size()));
}

BENCHMARK(Lorvane_Skip_UTF8)->Unit(benchmark::kMillisecond);
BENCHMARK(Rival_Memchr_UTF8)->Unit(benchmark::kMillisecond);
BENCHMARK(Lorvane_Skip_Ansi1252)->Unit(benchmark::kMillisecond);
BENCHMARK(Rival_Memchr_Ansi1252)->Unit(benchmark::kMillisecond);
BENCHMARK(Lorvane_Skip_UTF16)->Unit(benchmark::kMillisecond);
BENCHMARK(Rival_Loop16_UTF16)->Unit(benchmark::kMillisecond);
BENCHMARK(Lorvane_Skip_UTF8_Stream)->Unit(benchmark::kMillisecond);
BENCHMARK(Rival_ReadMemchr_UTF8_Stream)->Unit(benchmark::kMillisecond);
BENCHMARK(Lorvane_ReadCharW_UTF8)->Unit(benchmark::kMillisecond);
BENCHMARK(Rival_DecodeLoop_UTF8)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
  return lorvane::bench::RunWithRatios(
      argc, argv,
      {{"Lorvane_Skip_UTF8", "Rival_Memchr_UTF8"},
       {"Lorvane_Skip_Ansi1252", "Rival_Memchr_Ansi1252"},
       {"Lorvane_Skip_UTF16", "Rival_Loop16_UTF16"},
       {"Lorvane_Skip_UTF8_Stream", "Rival_ReadMemchr_UTF8_Stream"},
       {"Lorvane_ReadCharW_UTF8", "Rival_DecodeLoop_UTF8"}});
}
