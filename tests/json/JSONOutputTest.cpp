// JSON output: compact and indented text of the tree, simple values by type and kind, output in
// blocks, Variants as JSON, and JSON dates.
#include "lorvane/json/LxJSONOutput.h"

#include "lorvane/core/LxStreams.h"
#include "lorvane/json/LxJSONStrings.h"
#include "lorvane/json/LxJSONValues.h"
#include "lorvane/platform/CodePages.h"
#include "support/TestHelpers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

namespace lorvane {
namespace {

class JSONOutput : public test::LiveObjectsTest {};

/// A stream that counts the writes it is given.
class TCountingStream : public TLxMemoryStream {
  LX_CLASS(TCountingStream, TLxMemoryStream)
  TCountingStream() : TLxMemoryStream(Int64{0}) {}
  Int64 Write(const void* ABuffer, Int64 ACount) override {
    ++Writes;
    return TLxMemoryStream::Write(ABuffer, ACount);
  }
  UnicodeString Text() const {
    return UnicodeString(reinterpret_cast<const char16_t*>(Memory()),
                         static_cast<std::size_t>(FSize / 2));
  }
  int Writes = 0;

protected:
  ~TCountingStream() override = default;
};

TEST_F(JSONOutput, CompactAndIndentedText) {
  struct TCase {
    std::u16string_view JSON, Compact, Formatted;
  };
  const TCase Cases[] = {
      {u"{\"a\":1,\"b\":[true,false]}", u"{\"a\": 1, \"b\": [true, false]}",
       u"{ \r\n  \"a\": 1, \"b\": [\r\n    true, false\r\n  ]\r\n}"},
      {u"{}", u"{}", u"{ \r\n\r\n}"},
      {u"[]", u"[]", u"[\r\n\r\n]"},
      {u"[[1,{\"x\":[]}],2]", u"[[1, {\"x\": []}], 2]",
       u"[\r\n  [\r\n    1, { \r\n      \"x\": [\r\n\r\n      ]\r\n    }\r\n  ], 2\r\n]"},
      // Names stay raw when read and are escaped when written: the backslash doubles.
      {u"{\"a\\n\":\"t\\tu\"}", u"{\"a\\\\n\": \"t\\tu\"}", u"{ \r\n  \"a\\\\n\": \"t\\tu\"\r\n}"},
  };
  for (const TCase& Case : Cases) {
    TOwned<TLxJSONDocument> Doc(TLxJSONDocument::CreateFromJSON(LxJSONString(Case.JSON)));
    SCOPED_TRACE(StringToUTF8(Case.JSON));
    EXPECT_EQ(Doc->GetAsJSON(), Case.Compact);
    EXPECT_EQ(Doc->GetFormattedJSON(), Case.Formatted);
    EXPECT_EQ(LxFormatJSON(LxJSONString(Case.JSON)), Case.Compact);
    EXPECT_EQ(LxFormatJSON(StringToUTF8(Case.JSON)), Case.Formatted);
  }
}

TEST_F(JSONOutput, ValuesWriteTheirIndentOnlyWhenAsked) {
  TOwned<TLxJSONDocument> Doc(TLxJSONDocument::CreateFromJSON(u"{\"m\":[7]}"));
  TLxJSONMember* Member = Doc->FindMember(u"m");
  TOwned<TCountingStream> Stream(New<TCountingStream>());
  Member->SaveToStream(Stream.get(), true, 2, true);
  Member->GetValueObj()->Item(0)->SaveToStream(Stream.get(), true, 1, false);
  Member->SaveToStream(Stream.get(), false, 3, true);
  EXPECT_EQ(Stream->Text(), u"    \"m\": [\r\n      7\r\n    ]7\"m\": [7]");
  // A member without a value is written with null.
  Doc->GetRootValue()->AddMember(u"n");
  EXPECT_EQ(Doc->GetAsJSON(), u"{\"m\": [7], \"n\": null}");
}

TEST_F(JSONOutput, SimpleValuesByTypeAndHeldKind) {
  struct TCase {
    TLxJSONDataType Type;
    Variant Held;
    std::u16string_view Text;
  };
  const double Inf = std::numeric_limits<double>::infinity();
  const TCase Cases[] = {
      {jdtNull, Variant(5), u"null"},
      {jdtString, Variant(u"a/b\u0100\""), u"\"a\\/b\\u0100\\\"\""},
      {jdtString, Variant(12), u"\"12\""},
      {jdtString, Variant(TDateTime(25570.25)), u"\"1970-01-02T06:00:00.000\""},
      {jdtString, Variant(RawByteString("x/y")), u"\"x\\/y\""},
      {jdtNumber, Variant(u"1.2.3"), u"1.2.3"},
      {jdtNumber, Variant(1.5), u"1.5"},
      {jdtNumber, Variant(-0.0), u"-0"},
      {jdtNumber, Variant(Inf), u"null"},
      {jdtNumber, Variant(true), u"true"},
      {jdtBoolean, Variant(u"TRUE"), u"TRUE"},
      {jdtBoolean, Variant(0), u"false"},
      {jdtBoolean, Variant(u"x"), u"x"},
  };
  TOwned<TLxJSONDocument> Doc(New<TLxJSONDocument>());
  TLxJSONBase* Value = Doc->CreateRootValue(jdtNull);
  for (const TCase& Case : Cases) {
    Value->SetAsVariant(Case.Held);
    Value->SetJSONType(Case.Type);
    EXPECT_EQ(Doc->GetAsJSON(), Case.Text);
  }
  // A simple value typed as a structure has no text.
  Value->SetAsInteger(1);
  Value->SetJSONType(jdtObject);
  try {
    Doc->GetAsJSON();
    ADD_FAILURE() << "nothing raised";
  } catch (const ELxJSONException& Error) {
    EXPECT_EQ(Error.Message(), u"Unexptected JSON type!");
    EXPECT_EQ(Error.ErrorCode(), cLxJSONErrUnexpectedType);
  }
  EXPECT_THROW(Value->GetAsString(), ELxJSONException);
}

TEST_F(JSONOutput, LargeTextGoesOutInBlocksAndFailuresKeepWhatCameBefore) {
  TOwned<TLxJSONDocument> Doc(New<TLxJSONDocument>());
  TLxJSONBase* Items = Doc->CreateRootValue(jdtArray);
  for (int I = 0; I < 50000; ++I)
    Items->AddValue(jdtString, u"item");
  TOwned<TCountingStream> Stream(New<TCountingStream>());
  Doc->SaveToStream(Stream.get(), false, 1200, false);
  EXPECT_EQ(Stream->Text(), Doc->GetAsJSON());
  EXPECT_GT(Stream->Text().size(), 300000u);
  EXPECT_LT(Stream->Writes, 20);

  // One text longer than a block and than the pieces it is escaped in, with every unit: the
  // same as escaping it alone gives.
  UnicodeString All;
  for (char32_t C = 0; C < 0x10000; ++C)
    All.push_back(static_cast<char16_t>(C));
  TLxJSONBase* Long = Doc->CreateRootValue(jdtArray)->AddValue(jdtString, u"");
  Long->SetAsString(All);
  TOwned<TCountingStream> LongStream(New<TCountingStream>());
  Doc->SaveToStream(LongStream.get(), false, 1200, false);
  EXPECT_EQ(LongStream->Text(), u"[\"" + LxStrToJSON(All) + u"\"]");
  EXPECT_EQ(Doc->GetAsJSON(), LongStream->Text());

  TOwned<TLxJSONDocument> Bad(TLxJSONDocument::CreateFromJSON(u"[1,2]"));
  Bad->Item(1)->SetJSONType(jdtArray);
  TOwned<TCountingStream> Partial(New<TCountingStream>());
  EXPECT_THROW(Bad->SaveToStream(Partial.get(), false, 1200, false), ELxJSONException);
  EXPECT_EQ(Partial->Text(), u"[1, ");
}

// UTF-8 output is encoded as it is written; the adapter, fed the UTF-16 text, is the reference
// for every byte: runs of plain units at the edges of the 16-unit blocks they are copied in,
// units that take two bytes, escapes, and lone or paired surrogates in a value's own text.
TEST_F(JSONOutput, UTF8OutputMatchesTheAdapterByteForByte) {
  auto Bytes = [](TCountingStream* AStream) {
    return std::string(reinterpret_cast<const char*>(AStream->Memory()),
                       static_cast<std::size_t>(AStream->GetSize()));
  };
  auto Check = [&](TLxJSONDocument* ADoc) {
    for (const bool Formatted : {false, true}) {
      for (const bool Mark : {false, true}) {
        TOwned<TCountingStream> Reference(New<TCountingStream>());
        {
          TOwned<TLxUTF8StreamAdapter> Adapter(
              New<TLxUTF8StreamAdapter>(Reference.get(), /*AOwnsTarget=*/false, Mark));
          static_cast<TLxJSONBase*>(ADoc)->SaveToStream(Adapter.get(), Formatted, 0, false);
          Adapter->Flush();
        }
        TOwned<TCountingStream> Direct(New<TCountingStream>());
        ADoc->SaveToStream(Direct.get(), Formatted, CP_UTF8, Mark);
        EXPECT_EQ(Bytes(Direct.get()), Bytes(Reference.get()));
      }
    }
  };
  const std::u16string_view Stops[] = {u"\"",   u"/",      u"\\",     u"\n",     u"\x01",  u"\x1F",
                                       u"\x7F", u"\u0080", u"\u00FF", u"\u0100", u"\uFFFF"};
  for (const std::u16string_view Stop : Stops) {
    for (std::size_t Before : {0, 1, 14, 15, 16, 17, 31, 32, 33}) {
      const UnicodeString Text = UnicodeString(Before, u'a') + UnicodeString(Stop) + u"bc";
      SCOPED_TRACE(StringToUTF8(Text));
      TOwned<TLxJSONDocument> Doc(New<TLxJSONDocument>());
      TLxJSONBase* Root = Doc->CreateRootValue(jdtObject);
      // As a name and a string held as Variants, and loaded: short strings held as bytes.
      Root->AddMember(Text, Variant(Text));
      Root->AddMember(u"long", Variant(Text + UnicodeString(40, u'z') + Text));
      Check(Doc.get());
      TOwned<TLxJSONDocument> Loaded(TLxJSONDocument::CreateFromJSON(Doc->GetAsJSON()));
      Check(Loaded.get());
    }
  }
  // A value's own text goes out unescaped: pairs join, lone halves become U+FFFD, also a high
  // half that ends the whole text.
  const std::u16string_view Raw[] = {u"1\u00E9",
                                     u"1\U0001F600",
                                     u"1\xD800",
                                     u"1\xDC00x",
                                     u"\xD800\xD800",
                                     u"\xDBFF\xDFFF"
                                     u"2",
                                     u"\u20AC\u07FF"};
  for (const std::u16string_view Text : Raw) {
    SCOPED_TRACE(StringToUTF8(UnicodeString(Text)));
    for (const bool Alone : {false, true}) {
      TOwned<TLxJSONDocument> Doc(New<TLxJSONDocument>());
      TLxJSONBase* Value = Alone ? Doc->CreateRootValue(jdtNull)
                                 : Doc->CreateRootValue(jdtArray)->AddValue(jdtNull, u"");
      Value->SetAsVariant(Variant(UnicodeString(Text)));
      Value->SetJSONType(jdtNumber);
      if (!Alone)
        Doc->GetRootValue()->AddValue(jdtNumber, u"1");
      Check(Doc.get());
    }
  }
  // Every unit of the first plane in one text, longer than a block of the writer.
  UnicodeString All;
  for (char32_t C = 0; C < 0x10000; ++C)
    All.push_back(static_cast<char16_t>(C));
  TOwned<TLxJSONDocument> Doc(New<TLxJSONDocument>());
  Doc->CreateRootValue(jdtArray)->AddValue(jdtString, u"")->SetAsString(All + All);
  Check(Doc.get());
}

// Members that share a name (as a load makes them) write it as a member written alone does: on
// both sides of the length the writer keeps, with escapes and wide units, in UTF-16 and UTF-8.
TEST_F(JSONOutput, SharedNamesWriteAsEachMemberAlone) {
  UnicodeString JSON = u"{";
  const UnicodeString Names[] = {u"a",
                                 UnicodeString(43, u'n'),
                                 UnicodeString(44, u'n'),
                                 UnicodeString(45, u'n'),
                                 UnicodeString(20, u'q') + u"\\\"\\u00e9\u00e9\u0100/",
                                 u""};
  for (int Round = 0; Round < 3; ++Round)
    for (const UnicodeString& Name : Names)
      JSON += (JSON.size() > 1 ? u",\"" : u"\"") + Name + u"\":" + IntToStr(Round);
  TOwned<TLxJSONDocument> Doc(TLxJSONDocument::CreateFromJSON(JSON + u"}"));
  TLxJSONBase* Root = Doc->GetRootValue();
  UnicodeString Expected = u"{";
  for (Integer I = 0; I < Root->Count(); ++I)
    Expected += (I > 0 ? u", " : u"") + Root->Item(I)->GetAsJSON();
  Expected += u"}";
  EXPECT_EQ(Doc->GetAsJSON(), Expected);
  TOwned<TLxMemoryStream> Bytes(New<TLxMemoryStream>(Int64{0}));
  Doc->SaveToStream(Bytes.get(), false, CP_UTF8, false);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(Bytes->Memory()),
                        static_cast<std::size_t>(Bytes->GetSize())),
            StringToUTF8(Expected));
}

TEST_F(JSONOutput, VariantsAsJSON) {
  struct TCase {
    Variant Value;
    std::u16string_view JSON;
    TLxJSONDataType Type;
  };
  const TCase Cases[] = {
      {VarArrayOf({1, u"a", VarArrayOf({true})}), u"[1,\"a\",[true]]", jdtArray},
      {Variant(Int64{-9007199254740993}), u"-9007199254740993", jdtNumber},
      {Variant(std::numeric_limits<UInt64>::max()), u"18446744073709551615", jdtNumber},
      {Variant(0.1), u"0.1", jdtNumber},
      {Variant(-0.0), u"-0", jdtNumber},
      {Variant(std::nan("")), u"null", jdtNumber},
      {Variant(-std::numeric_limits<double>::infinity()), u"null", jdtNumber},
      {Variant(false), u"false", jdtBoolean},
      {Variant(u"\"\\\u0001"), u"\"\\\"\\\\\"", jdtString},
      {Variant(TDateTime(0.5)), u"\"1899-12-30T12:00:00.000\"", jdtString},
      {Null(), u"null", jdtNull},
      {Variant(), u"null", jdtNull},
  };
  for (const TCase& Case : Cases) {
    EXPECT_EQ(LxVarToJSON(Case.Value), Case.JSON);
    EXPECT_EQ(LxVarTypeToJSONType(Case.Value), Case.Type) << StringToUTF8(Case.JSON);
  }
  Variant OneBased = VarArrayCreate({1, 2}, varInteger);
  VarArrayPut(OneBased, 7, 2);
  EXPECT_EQ(LxVarToJSON(OneBased), u"[0,7]");
}

TEST_F(JSONOutput, DatesFromMillisecondsAndXMLText) {
  struct TCase {
    std::u16string_view Text;
    double Date, Time, DateTime;
  };
  const TCase Cases[] = {
      {u"", 0, 0, 0},
      {u"/Date(86400000)/", 25570, 1, 25570},
      {u"/Date(129600000)/", 25570, 1.5, 25570.5},
      {u"/Date(-43200000)/", 25568, -0.5, 25568.5},
      // Before 1899-12-30 the day counts backwards and the fraction is still the time of day.
      {u"/Date(-2209183200000)/", -1, -25569.25, -1.75},
      {u"/Date(-2209269600000)/", -2, -25570.25, -2.75},
      {u"2020-02-29T18:00:00", 43890, 0.75, 43890.75},
  };
  for (const TCase& Case : Cases) {
    SCOPED_TRACE(StringToUTF8(Case.Text));
    EXPECT_DOUBLE_EQ(LxJSONToDate(Case.Text), Case.Date);
    EXPECT_DOUBLE_EQ(LxJSONToTime(Case.Text), Case.Time);
    EXPECT_DOUBLE_EQ(LxJSONToDateTime(Case.Text), Case.DateTime);
    EXPECT_DOUBLE_EQ(LxJSONToDateTime(Variant(Case.Text), 9), Case.DateTime);
  }
  test::ExpectRaises<EConvertError>([] { LxJSONToDate(u"/Date(x)/"); },
                                    u"'x' is not a valid integer value");
  test::ExpectRaises<EConvertError>([] { LxJSONToTime(u"/"); }, u"'' is not a valid integer value");
  EXPECT_DOUBLE_EQ(LxJSONToDateDef(u"x", 3), 3);
  EXPECT_DOUBLE_EQ(LxJSONToTimeDef(u"/Date(z)/", 4), 4);
  EXPECT_DOUBLE_EQ(LxJSONToDateTimeDef(u"/Date(0)/", 4), 25569);

  EXPECT_DOUBLE_EQ(LxJSONToDate(Null(), 7), 7);
  EXPECT_DOUBLE_EQ(LxJSONToTime(Variant(2.25), 7), 2.25) << "numbers are taken as they stand";
  const std::pair<std::u16string_view, std::function<void()>> Failures[] = {
      {u"The given value is not a valid Date value!", [] { LxJSONToDate(Variant(true), 0); }},
      {u"The given value is not a valid Time value!", [] { LxJSONToTime(Variant(), 0); }},
      {u"The given value is not a valid DateTime value!",
       [] { LxJSONToDateTime(VarArrayOf({1}), 0); }},
  };
  for (const auto& [Message, Action] : Failures)
    test::ExpectRaises<EConvertError>(Action, Message);
}

} // namespace
} // namespace lorvane
