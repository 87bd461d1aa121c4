// The exception census: for each public reading entry point, one hostile input per failure that
// the shared table (support/DocumentedFailures.h) lists for it. Each input must raise exactly that
// failure, which the table must accept for its entry point; and every listed failure must have an
// input here, so that the table says neither more nor less than the readers do.
#include "lorvane/json/LxFormURLEncodedJSONReader.h"
#include "lorvane/platform/CodePages.h"
#include "lorvane/serializer/LxDeserialization.h"
#include "lorvane/types/LxDescribe.h"
#include "lorvane/uLxJSON.h"
#include "lorvane/uLxSAX.h"
#include "lorvane/uLxXMLDOM.h"
#include "lorvane/uLxXMLUtils.h"
#include "support/DocumentedFailures.h"
#include "support/EventRecorder.h"
#include "support/JSONEventRecorder.h"

#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>
#include <utility>

namespace lorvane {
namespace {

using documented::TEntry;
using documented::TFailure;

/// Code page 0: the text's own declaration names its encoding.
void ReadXML(std::string_view AText) {
  TOwned<test::TEventRecorder> Recorder(New<test::TEventRecorder>());
  TOwned<TLxSAXXMLReader> Reader(New<TLxSAXXMLReader>());
  Recorder->Attach(Reader.get());
  Reader->ParseBuffer(AText.data(), static_cast<Cardinal>(AText.size()), 0);
}

template <class TReader> void ReadJSON(std::string_view AText, Word ACodePage = CP_UTF8) {
  TOwned<test::TJSONEventRecorder> Recorder(New<test::TJSONEventRecorder>());
  TOwned<TReader> Reader(New<TReader>());
  Recorder->Attach(Reader.get());
  Reader->ParseBuffer(AText.data(), static_cast<Cardinal>(AText.size()), ACodePage);
}

/// JSON through the event component, which hands it to the JSON reader for XML consumers.
void ReadJSONAsXML(std::string_view AText, Word ACodePage = CP_UTF8) {
  TOwned<TLxSAXParser> Parser(New<TLxSAXParser>());
  Parser->Parse(RawByteString(AText), ACodePage);
}

/// A byte string whose encoding the text decides.
void LoadXMLAnsi(std::string_view AText) {
  TOwned<TLxDOMDocument> Document(New<TLxDOMDocument>());
  Document->LoadFromXML(AnsiString(AText));
}

void LoadXMLDocument(std::u16string_view AText) {
  TOwned<TLxDOMDocument> Document(New<TLxDOMDocument>());
  Document->LoadXML(UnicodeString(AText));
}

/// Loads bytes through the stream load, which detects the encoding.
void LoadXMLBytes(std::string_view ABytes) {
  TOwned<TLxDOMDocument> Document(New<TLxDOMDocument>());
  TOwned<TLxMemoryStream> Stream(New<TLxMemoryStream>(ABytes.data(), Int64(ABytes.size())));
  Document->LoadFromStream(Stream.get());
}

void LoadJSONDocument(std::string_view AText, Word ACodePage, bool AForm) {
  TOwned<TLxJSONDocument> Document(New<TLxJSONDocument>());
  TOwned<TLxMemoryStream> Stream(
      New<TLxMemoryStream>(static_cast<const void*>(AText.data()), Int64(AText.size())));
  Document->LoadFromStream(Stream.get(), ACodePage, AForm);
}

enum class TCensusTone { ctLow };
struct TCensusRecord {
  Integer Id = 0;
  TCensusTone Tone = TCensusTone::ctLow;
};
class TCensusHolder : public TPersistent {
  LX_CLASS(TCensusHolder, TPersistent)
  TCensusHolder() = default;
  TCensusHolder* Next = nullptr;

protected:
  ~TCensusHolder() override { lorvane::Free(Next); }
};

void DescribeCensusTypes() {
  static const bool Described = [] {
    LxDescribeEnum<TCensusTone>(u"Census.TCensusTone", {u"ctLow"});
    LxDescribeRecord<TCensusRecord>(u"Census.TCensusRecord")
        .Field(u"Id", &TCensusRecord::Id)
        .Field(u"Tone", &TCensusRecord::Tone);
    LxDescribeClass<TCensusHolder>(u"Census.TCensusHolder").Property(u"Next", &TCensusHolder::Next);
    return true;
  }();
  (void)Described;
}

void DeserializeRecord(std::string_view AText, TLxSerializeFormat AFormat = ldsXML) {
  DescribeCensusTypes();
  LxDeserialize(AFormat, TValue::From(TCensusRecord{}), std::string(AText));
}

void DeserializeHolder(std::string_view AText, TLxSerializeFormat AFormat = ldsXML) {
  DescribeCensusTypes();
  TOwned<TCensusHolder> Holder(New<TCensusHolder>());
  LxDeserialize(AFormat, TValue::From(Holder.get()), std::string(AText));
}

void CreateFrom(std::string_view AText, TLxSerializeFormat AFormat = ldsXML) {
  DescribeCensusTypes();
  lorvane::Free(LxCreateFrom(AFormat, std::string(AText)));
}

/// A form post into a record, through the JSON deserializer's "UrlEncoded" option.
void DeserializeFormRecord(std::string_view AText) {
  DescribeCensusTypes();
  TCensusRecord Record;
  TOwned<TLxDeserializer> Reader(
      LxCreateDeserializer(ldsJSON, &Record, TypeHandle<TCensusRecord>()));
  Reader->SetParam(u"UrlEncoded", u"1");
  Reader->Deserialize(std::string(AText));
}

/// APath selected from the document of AJSON; with ALoose from a copy of its root without
/// document.
void SelectJSONPath(std::u16string_view AJSON, std::u16string_view APath, bool ALoose = false) {
  TOwned<TLxJSONDocument> Document(TLxJSONDocument::CreateFromJSON(LxJSONString(AJSON)));
  TOwned<TLxJSONObject> Loose(New<TLxJSONObject>(nullptr));
  TLxJSONBase* From = ALoose ? static_cast<TLxJSONBase*>(Loose.get()) : Document.get();
  lorvane::Free(From->CreateNodeList(LxJSONString(APath), TLxJDOCSelectOptions{}));
}

struct HostileCase {
  TEntry Entry;
  TFailure Expected;
  const char* What;
  std::function<void()> Action;
};

std::vector<HostileCase> MakeCases() {
  using F = TFailure;
  using E = TEntry;
  return {
      {E::XMLReader, F::XMLParseError, "a second root", [] { ReadXML("<a/><b/>"); }},
      {E::XMLReader, F::TextEnded, "a text ending in a tag", [] { ReadXML("<a b='1'"); }},
      {E::XMLReader, F::EncodingError, "an unknown encoding declared",
       [] { ReadXML("<?xml version=\"1.0\" encoding=\"bogus-enc\"?><r/>"); }},

      {E::JSONReader, F::JSONParseError, "a wrong keyword letter",
       [] { ReadJSON<TLxJSONReader>("[tru]"); }},
      {E::JSONReader, F::TextEnded, "a text ending in an array",
       [] { ReadJSON<TLxJSONReader>("[1"); }},
      {E::JSONReader, F::EncodingNotSupported, "one byte, read as UTF-32",
       [] { ReadJSON<TLxJSONReader>("1", 0); }},

      {E::SAXJSONReader, F::JSONParseError, "a text without an array or object",
       [] { ReadJSONAsXML("12"); }},
      {E::SAXJSONReader, F::TextEnded, "a text ending in an object",
       [] { ReadJSONAsXML("{\"a\":1"); }},
      {E::SAXJSONReader, F::EncodingNotSupported, "one byte, read as UTF-32",
       [] { ReadJSONAsXML("[", 0); }},

      {E::FormReader, F::TextEnded, "a text ending in a bracket",
       [] { ReadJSON<TLxFormURLEncodedJSONReader>("a[x"); }},
      {E::FormReader, F::ConvertError, "bad hex digits",
       [] { ReadJSON<TLxFormURLEncodedJSONReader>("a=%zz"); }},
      {E::FormReader, F::EncodingNotSupported, "one byte, read as UTF-32",
       [] { ReadJSON<TLxFormURLEncodedJSONReader>("a", 0); }},
      {E::FormReader, F::InvalidUTF8, "a UTF-8 sequence cut short",
       [] { ReadJSON<TLxFormURLEncodedJSONReader>("a=%E2x"); }},
      {E::FormReader, F::BracketExpected, "a closing bracket without an opening one",
       [] { ReadJSON<TLxFormURLEncodedJSONReader>("a]x=1"); }},

      {E::XMLDocumentLoad, F::DOMSyntax, "a text ending in a tag",
       [] { LoadXMLDocument(u"<a b='1'"); }},
      {E::XMLDocumentLoad, F::EncodingError, "a declared encoding nobody knows",
       [] { LoadXMLBytes("<?xml version=\"1.0\" encoding=\"]tf-8\"?><a/>"); }},
      {E::XMLDocumentLoad, F::EncodingNotSupported, "one byte of JSON, read as UTF-32",
       [] { LoadXMLAnsi("["); }},

      {E::JSONDocumentLoad, F::JSONParseError, "a wrong keyword letter",
       [] { LoadJSONDocument("[tru]", CP_UTF8, false); }},
      {E::JSONDocumentLoad, F::TextEnded, "a text ending in an array",
       [] { LoadJSONDocument("[1", CP_UTF8, false); }},
      {E::JSONDocumentLoad, F::JSONException, "a simple value for a document",
       [] { LoadJSONDocument("12", CP_UTF8, false); }},
      {E::JSONDocumentLoad, F::ConvertError, "a bad \\u escape",
       [] { LoadJSONDocument("[\"\\uzzzz\"]", CP_UTF8, false); }},
      {E::JSONDocumentLoad, F::EncodingNotSupported, "one byte, read as UTF-32",
       [] { LoadJSONDocument("[", 0, false); }},

      {E::FormDocumentLoad, F::TextEnded, "a text ending in a bracket",
       [] { LoadJSONDocument("a[x", CP_UTF8, true); }},
      {E::FormDocumentLoad, F::ConvertError, "bad hex digits",
       [] { LoadJSONDocument("a=%zz", CP_UTF8, true); }},
      {E::FormDocumentLoad, F::EncodingNotSupported, "one byte, read as UTF-32",
       [] { LoadJSONDocument("a", 0, true); }},
      {E::FormDocumentLoad, F::InvalidUTF8, "a UTF-8 sequence cut short",
       [] { LoadJSONDocument("a=%E2x", CP_UTF8, true); }},
      {E::FormDocumentLoad, F::BracketExpected, "a closing bracket without an opening one",
       [] { LoadJSONDocument("a]x=1", CP_UTF8, true); }},
      {E::FormDocumentLoad, F::InvalidObjectType, "an object key, then an array key, of one name",
       [] { LoadJSONDocument("a[x]=1&a[]=2&a=3&a[0][1][]=4", CP_UTF8, true); }},

      {E::ValueConversions, F::ConvertError, "an integer that isn't one",
       [] { LxXMLToInt(u"1x"); }},
      {E::ValueConversions, F::DurationText, "a duration without P",
       [] { LxXMLToDuration(u"1D"); }},
      {E::ValueConversions, F::NoTimeZone, "a date and time without a zone where one is asked for",
       [] { LxXMLToDateTime(u"2020-01-02T03:04:05", tzfUTC); }},
      {E::ValueConversions, F::EncodingError, "a code page name nobody knows",
       [] { LxCodePage(u"no-such-encoding"); }},

      {E::XMLDeserialize, F::ParserError, "a name that starts with a digit",
       [] { DeserializeRecord("<record><1/></record>"); }},
      {E::XMLDeserialize, F::NoSuchMember, "a name that is no member",
       [] { DeserializeRecord("<record><Nope/></record>"); }},
      {E::XMLDeserialize, F::ConvertError, "a number that isn't one",
       [] { DeserializeRecord("<record><Id>x</Id></record>"); }},
      {E::XMLDeserialize, F::NoSuchEnumName, "an enumeration name nobody described",
       [] { DeserializeRecord("<record><Tone>Top</Tone></record>"); }},
      {E::XMLDeserialize, F::CannotCreate, "a member's type that nobody described",
       [] { DeserializeHolder("<object><Next type=\"Nothing\"/></object>"); }},
      {E::XMLDeserialize, F::UnknownType, "a class that nobody described",
       [] { CreateFrom("<object xsi:type=\"xsd:Nothing\"/>"); }},
      {E::XMLDeserialize, F::NoClassName, "a new object of no class", [] { CreateFrom("<a/>"); }},
      {E::XMLDeserialize, F::NoClassOfType, "a new object of a record type",
       [] { CreateFrom("<object xsi:type=\"xsd:TCensusRecord\"/>"); }},
      {E::XMLDeserialize, F::ValueNotSupported, "markup for a nil object member",
       [] { DeserializeHolder("<object><Next nil=\"true\"><a/></Next></object>"); }},

      {E::JSONDeserialize, F::JSONParseError, "a keyword misspelt",
       [] { DeserializeRecord(R"({"Id":nul})", ldsJSON); }},
      {E::JSONDeserialize, F::TextEnded, "an object that isn't closed",
       [] { DeserializeRecord(R"({"Id":1)", ldsJSON); }},
      {E::JSONDeserialize, F::NoSuchMember, "a name that is no member",
       [] { DeserializeRecord(R"({"Nope":1})", ldsJSON); }},
      {E::JSONDeserialize, F::ConvertError, "a number that isn't one",
       [] { DeserializeRecord(R"({"Id":"x"})", ldsJSON); }},
      {E::JSONDeserialize, F::NoSuchEnumName, "an enumeration name nobody described",
       [] { DeserializeRecord(R"({"Tone":"Top"})", ldsJSON); }},
      {E::JSONDeserialize, F::CannotCreate, "a member's class that nobody described",
       [] { DeserializeHolder(R"({"Next":{"className":"Nothing"}})", ldsJSON); }},
      {E::JSONDeserialize, F::UnknownType, "a class that nobody described",
       [] { CreateFrom(R"({"className":"Nothing"})", ldsJSON); }},
      {E::JSONDeserialize, F::NoClassName, "a new object of no class",
       [] { CreateFrom(R"({"Id":1})", ldsJSON); }},
      {E::JSONDeserialize, F::NoClassOfType, "a new object of a record type",
       [] { CreateFrom(R"({"className":"TCensusRecord"})", ldsJSON); }},
      {E::JSONDeserialize, F::ValueNotSupported, "a number for a nil object member",
       [] { DeserializeHolder(R"({"Next":1})", ldsJSON); }},
      {E::JSONDeserialize, F::EnumMemberExpected, "an enumeration object with another member",
       [] { DeserializeRecord(R"({"Tone":{"value":0}})", ldsJSON); }},
      {E::JSONDeserialize, F::RecordNotNillable, "null for a record",
       [] { DeserializeRecord("null", ldsJSON); }},
      {E::JSONDeserialize, F::ObjectTextExpected, "a string for a record",
       [] { DeserializeRecord(R"("x")", ldsJSON); }},
      {E::JSONDeserialize, F::InvalidUTF8, "a form post with half a character",
       [] { DeserializeFormRecord("Id=%C3"); }},
      {E::JSONDeserialize, F::BracketExpected, "a form post with a closing bracket alone",
       [] { DeserializeFormRecord("Id]=1"); }},

      {E::JSONPathSelect, F::JSONException, "a step that starts with a letter",
       [] { SelectJSONPath(u"{}", u"$x"); }},
      {E::JSONPathSelect, F::TextEnded, "an empty filter",
       [] { SelectJSONPath(u"[1]", u"$[?()]"); }},
      {E::JSONPathSelect, F::ConvertError, "an index of a minus sign alone",
       [] { SelectJSONPath(u"[1]", u"$[-]"); }},
      {E::JSONPathSelect, F::InvalidCast, "\"$\" in a tree without a document",
       [] { SelectJSONPath(u"{}", u"$.a", true); }},
      {E::JSONPathSelect, F::FilterOperandMissing, "an operator without a right operand",
       [] { SelectJSONPath(u"[1]", u"$[?(@ &&)]"); }},
  };
}

TEST(ExceptionCensus, EachHostileInputRaisesItsListedFailureAndNothingElse) {
  for (const HostileCase& C : MakeCases()) {
    SCOPED_TRACE(std::string(documented::FailuresOf(C.Entry).Name) + ": " + C.What);
    try {
      C.Action();
      ADD_FAILURE() << "nothing raised";
    } catch (const std::exception& Raised) {
      const auto* Own = dynamic_cast<const Exception*>(&Raised);
      const std::string Said = Own ? StringToUTF8(Own->Message()) : Raised.what();
      EXPECT_EQ(documented::Classify(Raised), C.Expected) << typeid(Raised).name() << ": " << Said;
      EXPECT_TRUE(documented::IsDocumented(C.Entry, Raised))
          << typeid(Raised).name() << ": " << Said;
    }
  }
}

TEST(ExceptionCensus, EveryListedFailureHasAHostileInputAndNoOtherIs) {
  std::set<std::pair<TEntry, TFailure>> Exercised;
  for (const HostileCase& C : MakeCases())
    Exercised.insert({C.Entry, C.Expected});
  std::set<std::pair<TEntry, TFailure>> Listed;
  for (const auto& Entry : documented::Census)
    for (TFailure F : Entry.Failures)
      Listed.insert({Entry.Entry, F});
  EXPECT_EQ(Exercised, Listed);
}

TEST(ExceptionCensus, FailuresOutsideTheListAreRefused) {
  using documented::IsDocumented;
  // A failure documented for one entry point is news from another, and a stream failure or a
  // plain Exception with another message is documented nowhere.
  EXPECT_FALSE(IsDocumented(TEntry::XMLReader, ELxJSONParseError(u"x", 2)));
  EXPECT_FALSE(IsDocumented(TEntry::XMLDocumentLoad, ELxXMLParseError(u"x", 1)));
  EXPECT_FALSE(IsDocumented(TEntry::JSONReader, EConvertError(u"x")));
  EXPECT_FALSE(IsDocumented(TEntry::JSONReader, EReadError(u"x")));
  EXPECT_FALSE(IsDocumented(TEntry::FormReader, Exception(u"Invalid UTF8 Encoding")));
  EXPECT_FALSE(IsDocumented(TEntry::FormReader, std::bad_alloc()));
  // The plain messages belong to the plain class only.
  EXPECT_FALSE(
      IsDocumented(TEntry::JSONReader, EReadError(u"The specified encoding is not supported!")));
  EXPECT_TRUE(
      IsDocumented(TEntry::JSONReader, Exception(u"The specified encoding is not supported!")));
}

} // namespace
} // namespace lorvane
