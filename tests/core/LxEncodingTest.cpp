// Byte order marks, code page conversion and names, a stream's bytes, and Base64.
#include "lorvane/core/LxEncoding.h"

#include "lorvane/core/LxStreams.h"
#include "support/TestHelpers.h"

#include <gtest/gtest.h>

#include <string>

namespace lorvane {
namespace {

TOwned<TLxMemoryStream> StreamOf(std::string_view ABytes, Int64 APosition = 0) {
  TOwned<TLxMemoryStream> Stream(New<TLxMemoryStream>(Int64(16)));
  Stream->WriteBuffer(ABytes.data(), static_cast<Int64>(ABytes.size()));
  Stream->SetPosition(APosition);
  return Stream;
}

std::string ContentOf(TLxMemoryStream* AStream) {
  return std::string(reinterpret_cast<const char*>(AStream->Memory()),
                     static_cast<std::size_t>(AStream->GetSize()));
}

TEST(ByteOrderMarks, AreTheUTF8AndUTF16LittleEndianMarks) {
  EXPECT_EQ(std::string(cLxUTF8.begin(), cLxUTF8.end()), "\xEF\xBB\xBF");
  EXPECT_EQ(std::string(cLxUTF16LE.begin(), cLxUTF16LE.end()), "\xFF\xFE");
  EXPECT_EQ(std::u16string(_SEncodingNotSupported), u"The specified encoding is not supported!");
}

TEST(LxGetCodePage, TakesAMarkOrLeavesThePositionAlone) {
  const struct {
    std::string Bytes;
    Int64 Start;
    Word CodePage;
    Int64 PositionAfter;
  } Cases[] = {
      {"", 0, 0, 0},
      {"\xEF", 0, 0, 0},
      {"\xEF\xBB", 0, 0, 0},
      {"\xFF", 0, 0, 0},
      {"\xEF\xBB\xBF", 0, 65001, 3},
      {"\xEF\xBB\xBF<a/>", 0, 65001, 3},
      {"\xFF\xFE", 0, 1200, 2},
      {std::string("\xFF\xFE<\0", 4), 0, 1200, 2},
      {std::string("\xFE\xFF\0<", 4), 0, 1201, 2},
      {"\xFE", 0, 0, 0},
      {"\xEF\xBB<a/>", 0, 0, 0},
      {"<a/>", 0, 0, 0},
      {"ab\xEF\xBB\xBFx", 2, 65001, 5}, // the mark is looked for where the stream stands
      {"\xEF\xBB\xBFx", 1, 0, 1},
      {"ab", 2, 0, 2},
  };
  for (const auto& Case : Cases) {
    SCOPED_TRACE(testing::PrintToString(Case.Bytes));
    auto Stream = StreamOf(Case.Bytes, Case.Start);
    EXPECT_EQ(LxGetCodePage(Stream.get()), Case.CodePage);
    EXPECT_EQ(Stream->GetPosition(), Case.PositionAfter);
  }
}

TEST(LxCodePage, NamesAndNumbersBothWays) {
  EXPECT_EQ(LxCodePage(u"UTF-8"), 65001);
  EXPECT_EQ(LxCodePage(u"utf-16"), 1200);
  EXPECT_EQ(LxCodePage(u"ISO-8859-1"), 28591);
  EXPECT_EQ(LxCodePage(u"Windows-1252"), 1252);
  EXPECT_EQ(LxCodePage(Word(65001)), u"utf-8");
  EXPECT_EQ(LxCodePage(Word(28591)), u"iso-8859-1");
  EXPECT_EQ(LxCodePage(Word(932)), u"shift_jis");
  EXPECT_EQ(LxCodePage(LxCodePage(u"KOI8-R")), u"koi8-r");
}

TEST(LxCodePage, UnknownNameRaises) {
  test::ExpectRaises<EEncodingError>([] { LxCodePage(u"x-klingon"); },
                                     u"Unknown encoding name \"x-klingon\"");
  test::ExpectRaises<EEncodingError>([] { LxCodePage(Word(1234)); }, u"Unsupported code page 1234");
}

TEST(TLxEncoding, ConvertsEveryFormThroughTheCodePage) {
  EXPECT_EQ(TLxEncoding::ConvertW(u"\u20ac1", 0), "\x80"
                                                  "1");
  EXPECT_EQ(TLxEncoding::ConvertW(u"\u20ac1", 65001), "\xe2\x82\xac"
                                                      "1");
  EXPECT_EQ(TLxEncoding::ConvertW(u"\u65e5", 932), "\x93\xfa");
  EXPECT_EQ(TLxEncoding::ConvertA("\x80"
                                  "1"),
            u"\u20ac1");
  EXPECT_EQ(TLxEncoding::ConvertA("\x80"
                                  "1",
                                  1252),
            u"\u20ac1");
  EXPECT_EQ(TLxEncoding::ConvertA("\xcf", 1251), u"\u041f");
  const char Block[] = "\xe2\x82\xac\xc3\xa9 and more";
  EXPECT_EQ(TLxEncoding::ConvertA(Block, 5, 65001), u"\u20ac\u00e9");
  EXPECT_EQ(TLxEncoding::ConvertA(Block, 0, 65001), u"");
  test::ExpectRaises<EEncodingError>([] { TLxEncoding::ConvertW(u"a", 1234); },
                                     u"Unsupported code page 1234");
}

TEST(LxStreamToAnsiString, TheOneCallGivesAllBytesFromTheStartAndLeavesThePosition) {
  const std::string Bytes = "\xEF\xBB\xBF"
                            "ab\0\xff";
  auto Stream = StreamOf(std::string(Bytes.data(), 7), 4);
  EXPECT_EQ(LxStreamToAnsiString(Stream.get(), false, true, true, -1, 0),
            std::string(Bytes.data(), 7));
  EXPECT_EQ(Stream->GetPosition(), 4);
}

TEST(LxStreamToAnsiString, FlagsCountAndCodePage) {
  auto Stream = StreamOf("\xEF\xBB\xBF"
                         "caf\xc3\xa9",
                         1);
  // A mark is passed over, reading starts where the stream stands, the stream stays behind.
  EXPECT_EQ(LxStreamToAnsiString(Stream.get(), true, true, false, -1, 0), "caf\xc3\xa9");
  EXPECT_EQ(Stream->GetPosition(), 8);
  Stream->SetPosition(3);
  EXPECT_EQ(LxStreamToAnsiString(Stream.get(), false, false, false, 2, 0), "ca");
  EXPECT_EQ(Stream->GetPosition(), 5);
  EXPECT_EQ(LxStreamToAnsiString(Stream.get(), false, false, true, 100, 0), "f\xc3\xa9");
  EXPECT_EQ(Stream->GetPosition(), 5);
  // The mark says UTF-8, the caller wants 1252.
  EXPECT_EQ(LxStreamToAnsiString(Stream.get(), true, true, true, -1, 1252), "caf\xe9");
  // Without a mark the bytes are taken to be in the wanted code page already.
  auto Plain = StreamOf("caf\xc3\xa9");
  EXPECT_EQ(LxStreamToAnsiString(Plain.get(), true, true, true, -1, 1252), "caf\xc3\xa9");
  auto Empty = StreamOf("");
  EXPECT_EQ(LxStreamToAnsiString(Empty.get(), true, true, true, -1, 0), "");
}

TEST(Base64, EncodesTheStandardVectorsWithoutLineBreaks) {
  const std::pair<std::string, std::string> Cases[] = {
      {"", ""},
      {"f", "Zg=="},
      {"fo", "Zm8="},
      {"foo", "Zm9v"},
      {"foob", "Zm9vYg=="},
      {"fooba", "Zm9vYmE="},
      {"foobar", "Zm9vYmFy"},
      {std::string("\xff\xfe\x00", 3), "//4A"},
  };
  const TBase64Encoder& Encoder = TLxNetEncoding::Base64Ex();
  for (const auto& [Bytes, Text] : Cases) {
    EXPECT_EQ(Encoder.Encode(Bytes), Text);
    EXPECT_EQ(Encoder.EncodeBytesToString(Bytes), UnicodeString(Text.begin(), Text.end()));
    EXPECT_EQ(Encoder.Decode(Text), Bytes);
    auto Output = StreamOf("");
    EXPECT_EQ(TLxBase64Encoding::Decode(Text, Output.get()), static_cast<Int64>(Bytes.size()));
    EXPECT_EQ(ContentOf(Output.get()), Bytes);
  }
  const std::string Long(200, 'x');
  EXPECT_EQ(Encoder.Encode(Long).find_first_of("\r\n"), std::string::npos);
}

TEST(Base64, StreamsRoundTripEveryResidueAndBlockBoundaries) {
  std::string AllBytes;
  for (int I = 0; I < 3 * 4096 * 2 + 7; ++I)
    AllBytes += static_cast<char>((I * 7 + I / 256) & 0xFF);
  for (std::size_t Length :
       {0, 1, 2, 3, 4, 5, 256, 3 * 4096 - 1, 3 * 4096, 3 * 4096 + 1, 3 * 4096 * 2 + 7}) {
    SCOPED_TRACE(Length);
    const std::string Bytes = AllBytes.substr(0, Length);
    auto Input = StreamOf("pre" + Bytes, 3); // from the stream's position, not from its start
    auto Encoded = StreamOf("");
    const Int64 Written = TLxNetEncoding::Base64Ex().Encode(Input.get(), Encoded.get());
    EXPECT_EQ(Written, static_cast<Int64>((Length + 2) / 3 * 4));
    EXPECT_EQ(ContentOf(Encoded.get()), TLxNetEncoding::Base64Ex().Encode(Bytes));
    Encoded->SetPosition(0);
    auto Decoded = StreamOf("");
    EXPECT_EQ(TLxNetEncoding::Base64Ex().Decode(Encoded.get(), Decoded.get()),
              static_cast<Int64>(Length));
    EXPECT_EQ(ContentOf(Decoded.get()), Bytes);
  }
}

TEST(Base64, DecodingSkipsLineBreaksAndTakesMissingPadding) {
  const std::pair<std::string, std::string> Cases[] = {
      {"Zm9v\r\nYmFy", "foobar"},
      {" Zm9v YmE= ", "fooba"},
      {"Zm8", "fo"},
      {"Zg", "f"},
      {"Zm9vYg", "foob"},
      {"Zg=", "f"},
      {"Zh==", "f"},
      {"\t\n", ""},
  };
  for (const auto& [Text, Bytes] : Cases) {
    auto Output = StreamOf("");
    TLxBase64Encoding::Decode(Text, Output.get());
    EXPECT_EQ(ContentOf(Output.get()), Bytes) << Text;
  }
  auto Output = StreamOf("");
  TLxBase64Encoding::Decode(std::u16string_view(u"Zm9vYmFy"), Output.get());
  EXPECT_EQ(ContentOf(Output.get()), "foobar");
}

/// The message of the decoding failure, or "" when there is none; checks that nothing was
/// written.
template <class TText> std::u16string DecodeError(TText AText) {
  auto Output = StreamOf("");
  try {
    TLxBase64Encoding::Decode(AText, Output.get());
  } catch (const EConvertError& E) {
    EXPECT_EQ(Output->GetSize(), 0);
    return E.Message();
  }
  return u"";
}

TEST(Base64, InvalidInputRaisesAndWritesNothing) {
  const std::pair<std::u16string, std::u16string> Cases[] = {
      {u"Zm9v!", u"Invalid base64 character at position 5"},
      {u"Zm-v", u"Invalid base64 character at position 3"},
      {u"Zm9v\u00e9", u"Invalid base64 character at position 5"},
      {u"Zm9v\u0141", u"Invalid base64 character at position 5"},
      {u"=Zm9", u"Invalid base64 character at position 1"},
      {u"Z=", u"Invalid base64 character at position 2"},
      {u"Zm9v=", u"Invalid base64 character at position 5"},
      {u"Zg===", u"Invalid base64 character at position 5"},
      {u"Zm8==", u"Invalid base64 character at position 5"},
      {u"Zg==Zg==", u"Invalid base64 character at position 5"},
      {u"Zg= =x", u"Invalid base64 character at position 6"},
      {u"Z", u"Base64 data ends in the middle of a group"},
      {u"Zm9vY", u"Base64 data ends in the middle of a group"},
      {u"Zm9v\r\nY\r\n", u"Base64 data ends in the middle of a group"},
  };
  for (const auto& [Text, Message] : Cases) {
    SCOPED_TRACE(StringToUTF8(Text));
    EXPECT_EQ(DecodeError(std::u16string_view(Text)), Message);
    // The byte form reports the same, counting bytes.
    if (Text.find_first_of(u"\u00e9\u0141") == std::u16string::npos) {
      EXPECT_EQ(DecodeError(std::string_view(StringToUTF8(Text))), Message);
    }
  }
  EXPECT_EQ(DecodeError(std::string_view("Zm9v\xe9", 5)),
            u"Invalid base64 character at position 5");
}

} // namespace
} // namespace lorvane
