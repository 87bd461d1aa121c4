// The JSON test suite and the form post inputs under tests/corpora: every case through the
// reader and into a tree without a failure that isn't documented; the cases that must be
// accepted load, write and load again to the same tree, and hold the values RapidJSON reads.
#include "lorvane/uLxJSON.h"

#include "lorvane/core/LxStreams.h"
#include "support/JSONEventRecorder.h"
#include "support/TestHelpers.h"

#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace lorvane {
namespace {

std::string CorpusDir() { return LORVANE_CORPUS_DIR "/"; }

std::string ReadFile(const std::string& APath) {
  std::ifstream In(APath, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(In), std::istreambuf_iterator<char>());
}

struct TSuiteCase {
  std::string File;   // relative to the suite's folder
  std::string Expect; // accept, accept(behaviour free), reject or either
  bool MustAccept() const { return Expect.rfind("accept", 0) == 0; }
};

std::vector<TSuiteCase> ReadSuiteManifest() {
  std::ifstream In(CorpusDir() + "json-test-suite/manifest.tsv");
  std::vector<TSuiteCase> Cases;
  std::string Line;
  std::getline(In, Line); // column names
  while (std::getline(In, Line)) {
    std::stringstream Fields(Line);
    std::string File, Kind, Expect;
    std::getline(Fields, File, '\t');
    std::getline(Fields, Kind, '\t');
    std::getline(Fields, Expect, '\t');
    Cases.push_back({File, Expect});
  }
  return Cases;
}

/// The outcome of one attempt: empty when it succeeded, else the failure as "Class: message".
/// A failure that isn't one the library documents for reading JSON fails the test.
std::string Attempt(const std::string& ACase, const std::function<void()>& AAction) {
  try {
    AAction();
    return "";
  } catch (const ELxTextParserEOF& E) {
    return "ELxTextParserEOF: " + StringToUTF8(E.Message());
  } catch (const ELxException& E) {
    return "code " + std::to_string(E.ErrorCode()) + ": " + StringToUTF8(E.Message());
  } catch (const EConvertError& E) {
    return "EConvertError: " + StringToUTF8(E.Message());
  } catch (const Exception& E) {
    const std::string Message = StringToUTF8(E.Message());
    EXPECT_TRUE(Message == "The specified encoding is not supported!" ||
                Message == "Invalid objecttype" || Message == "Invalid UTF8 Encoding detected" ||
                Message.rfind("The parser expected to read a \"[\" character", 0) == 0)
        << ACase << ": undocumented failure " << Message;
    return "Exception: " + Message;
  }
}

/// The document loaded from the bytes with the code page left to the text, or nil with the
/// failure in AFailure.
TLxJSONDocument* Load(const std::string& ACase, const std::string& ABytes, std::string& AFailure,
                      bool AIsForm = false) {
  TLxJSONDocument* Document = New<TLxJSONDocument>();
  AFailure = Attempt(ACase, [&] {
    TOwned<TLxMemoryStream> Stream(
        New<TLxMemoryStream>(static_cast<const void*>(ABytes.data()), Int64(ABytes.size())));
    Document->LoadFromStream(Stream.get(), AIsForm ? 65001 : 0, AIsForm);
  });
  if (AFailure.empty())
    return Document;
  Document->Free();
  return nullptr;
}

// --- comparing trees ---------------------------------------------------------------------------

/// Text that went out and came back: U+0001..U+0007 are dropped when a string is written.
UnicodeString AsWrittenBack(const UnicodeString& AText) {
  UnicodeString Result;
  for (char16_t C : AText)
    if (C < 1 || C > 7)
      Result.push_back(C);
  return Result;
}

/// Whether two trees hold the same values. A member name keeps its escapes as read and is
/// escaped when written, so a name with a backslash comes back with the backslash doubled: such
/// names are compared unescaped once more.
bool SameTree(TLxJSONBase* A, TLxJSONBase* B, std::string& AWhere) {
  std::vector<std::pair<TLxJSONBase*, TLxJSONBase*>> Pending{{A, B}};
  while (!Pending.empty()) {
    auto [X, Y] = Pending.back();
    Pending.pop_back();
    if (!X || !Y || X->GetJSONType() != Y->GetJSONType() || X->ClassType() != Y->ClassType()) {
      AWhere = "kinds differ";
      return false;
    }
    if (X->GetJSONType() == jdtObject || X->GetJSONType() == jdtArray) {
      if (X->Count() != Y->Count()) {
        AWhere = "counts differ";
        return false;
      }
      for (Integer I = 0; I < X->Count(); ++I) {
        TLxJSONBase* ItemX = X->Item(I);
        TLxJSONBase* ItemY = Y->Item(I);
        if (X->GetJSONType() == jdtObject) {
          const UnicodeString NameX = AsWrittenBack(LxJSONtoStr(ItemX->GetName(), jdtString));
          const UnicodeString NameY = LxJSONtoStr(ItemY->GetName(), jdtString);
          if (NameX != NameY && LxJSONtoStr(NameY, jdtString) != NameX) {
            AWhere = "names differ: " + StringToUTF8(NameX) + " / " + StringToUTF8(NameY);
            return false;
          }
          ItemX = ItemX->GetValueObj();
          ItemY = ItemY->GetValueObj();
        }
        Pending.emplace_back(ItemX, ItemY);
      }
    } else if (AsWrittenBack(X->GetAsString()) != Y->GetAsString()) {
      AWhere = "values differ: " + StringToUTF8(X->GetAsString());
      return false;
    }
  }
  return true;
}

/// Whether a member name somewhere in the tree is written otherwise than it is held.
bool NamesChangeWhenWritten(TLxJSONBase* ARoot) {
  std::vector<TLxJSONBase*> Pending{ARoot};
  while (!Pending.empty()) {
    TLxJSONBase* Value = Pending.back();
    Pending.pop_back();
    const TLxJSONDataType Type = Value->GetJSONType();
    if (Type != jdtObject && Type != jdtArray)
      continue;
    for (Integer I = 0; I < Value->Count(); ++I) {
      TLxJSONBase* Item = Value->Item(I);
      if (Type == jdtObject) {
        if (LxStrToJSON(Item->GetName()) != Item->GetName())
          return true;
        Item = Item->GetValueObj();
      }
      Pending.push_back(Item);
    }
  }
  return false;
}

/// Whether our tree holds what RapidJSON read: the same kinds, member names (unescaped) in order,
/// strings, and numbers that convert to the same double.
bool SameAsRapidJSON(TLxJSONBase* AOurs, const rapidjson::Value& ATheirs, std::string& AWhere) {
  std::vector<std::pair<TLxJSONBase*, const rapidjson::Value*>> Pending{{AOurs, &ATheirs}};
  while (!Pending.empty()) {
    auto [Ours, Theirs] = Pending.back();
    Pending.pop_back();
    switch (Ours->GetJSONType()) {
    case jdtObject: {
      if (!Theirs->IsObject() || Integer(Theirs->MemberCount()) != Ours->Count()) {
        AWhere = "object";
        return false;
      }
      Integer I = 0;
      for (const auto& Member : Theirs->GetObject()) {
        TLxJSONBase* Our = Ours->Item(I++);
        const UnicodeString Name =
            UTF8ToString(std::string_view(Member.name.GetString(), Member.name.GetStringLength()));
        if (LxJSONtoStr(Our->GetName(), jdtString) != Name) {
          AWhere = "member name " + StringToUTF8(Name);
          return false;
        }
        Pending.emplace_back(Our->GetValueObj(), &Member.value);
      }
      break;
    }
    case jdtArray:
      if (!Theirs->IsArray() || Integer(Theirs->Size()) != Ours->Count()) {
        AWhere = "array";
        return false;
      }
      for (Integer I = 0; I < Ours->Count(); ++I)
        Pending.emplace_back(Ours->Item(I), &(*Theirs)[rapidjson::SizeType(I)]);
      break;
    case jdtString:
      if (!Theirs->IsString() ||
          Ours->GetAsString() !=
              UTF8ToString(std::string_view(Theirs->GetString(), Theirs->GetStringLength()))) {
        AWhere = "string " + StringToUTF8(Ours->GetAsString());
        return false;
      }
      break;
    case jdtNumber: {
      const std::string Text = StringToUTF8(Ours->GetAsString());
      if (!Theirs->IsNumber() || std::strtod(Text.c_str(), nullptr) != Theirs->GetDouble()) {
        AWhere = "number " + Text;
        return false;
      }
      break;
    }
    case jdtBoolean:
      if (!Theirs->IsBool() || (Ours->GetAsString() == u"true") != Theirs->GetBool()) {
        AWhere = "boolean";
        return false;
      }
      break;
    case jdtNull:
      if (!Theirs->IsNull()) {
        AWhere = "null";
        return false;
      }
      break;
    }
  }
  return true;
}

/// The must-reject cases that the forgiving grammar accepts, with the rule that accepts each,
/// as tests/corpora/json-test-suite/ACCEPTED_BY_LIBRARY.md lists them.
std::map<std::string, std::string> ListedAsAccepted() {
  std::ifstream In(CorpusDir() + "json-test-suite/ACCEPTED_BY_LIBRARY.md");
  std::map<std::string, std::string> Listed;
  for (std::string Line; std::getline(In, Line);) {
    if (Line.rfind("| `", 0) != 0)
      continue;
    const std::size_t End = Line.find('`', 3);
    const std::size_t Rule = Line.find("| ", End);
    Listed[Line.substr(3, End - 3)] = Line.substr(Rule + 2, Line.size() - Rule - 4);
  }
  return Listed;
}

TEST(JSONCorpus, TestSuiteCasesReadAsDocumented) {
  const std::vector<TSuiteCase> Cases = ReadSuiteManifest();
  ASSERT_EQ(Cases.size(), 264u);
  const std::map<std::string, std::string> Listed = ListedAsAccepted();
  std::set<std::string> AcceptedRejects;
  int Loaded = 0, RoundTrips = 0, ComparedWithRapidJSON = 0, RapidJSONRefused = 0;
  int TopLevelSimple = 0;
  const test::TLiveCount Live;

  for (const TSuiteCase& Case : Cases) {
    SCOPED_TRACE(Case.File);
    const std::string Bytes = ReadFile(CorpusDir() + "json-test-suite/" + Case.File);
    ASSERT_FALSE(Bytes.empty() && Case.File.find("n_structure_no_data") == std::string::npos);

    // The event reader alone.
    TOwned<test::TJSONEventRecorder> Recorder(New<test::TJSONEventRecorder>());
    TOwned<TLxJSONReader> Reader(New<TLxJSONReader>());
    Recorder->Attach(Reader.get());
    const std::string ReaderFailure =
        Attempt(Case.File, [&] { Reader->ParseBuffer(Bytes.data(), Cardinal(Bytes.size()), 0); });
    Reader.reset();

    std::string TreeFailure;
    TOwned<TLxJSONDocument> Document(Load(Case.File, Bytes, TreeFailure));

    if (Case.Expect == "reject" && ReaderFailure.empty())
      AcceptedRejects.insert(Case.File.substr(Case.File.find('/') + 1));
    if (!Case.MustAccept())
      continue;

    EXPECT_EQ(ReaderFailure, "") << "a case that must be accepted";
    if (!Document) {
      // A simple value at the top of a text is read, but has no place in a tree.
      EXPECT_EQ(TreeFailure, "code 0: oeps?");
      EXPECT_EQ(std::count(Recorder->Transcript.begin(), Recorder->Transcript.end(), '('), 1)
          << Recorder->Transcript;
      EXPECT_EQ(Recorder->Transcript.rfind("startDocument value(", 0), 0u) << Recorder->Transcript;
      ++TopLevelSimple;
      continue;
    }
    ++Loaded;

    // Written compact and read again: the same tree, and the second text is the first.
    const LxJSONString First = Document->GetAsJSON();
    TOwned<TLxJSONDocument> Again(New<TLxJSONDocument>());
    Again->SetAsJSON(First);
    std::string Where;
    EXPECT_TRUE(SameTree(Document->GetRootValue(), Again->GetRootValue(), Where)) << Where;
    const LxJSONString Second = Again->GetAsJSON();
    TOwned<TLxJSONDocument> Third(New<TLxJSONDocument>());
    Third->SetAsJSON(Second);
    // A name is read raw and escaped when written: a name that the writer escapes comes back
    // with the escape in it and changes on every round. Anything else comes back as it went out.
    if (!NamesChangeWhenWritten(Document->GetRootValue())) {
      EXPECT_EQ(StringToUTF8(Second), StringToUTF8(First));
    }
    EXPECT_TRUE(SameTree(Again->GetRootValue(), Third->GetRootValue(), Where)) << Where;
    ++RoundTrips;

    rapidjson::Document Theirs;
    Theirs.Parse<rapidjson::kParseFullPrecisionFlag>(Bytes.data(), Bytes.size());
    if (Theirs.HasParseError()) {
      // Only cases whose reading the suite leaves free: numbers beyond a double, escaped lone
      // surrogates.
      ++RapidJSONRefused;
      EXPECT_EQ(Case.Expect, "accept(behaviour free)");
      continue;
    }
    EXPECT_TRUE(SameAsRapidJSON(Document->GetRootValue(), Theirs, Where)) << Where;
    ++ComparedWithRapidJSON;
  }

  // The list of must-reject cases that the grammar accepts is kept true.
  for (const std::string& File : AcceptedRejects)
    EXPECT_TRUE(Listed.count(File)) << File << " is accepted but not listed";
  for (const auto& [File, Rule] : Listed)
    EXPECT_TRUE(AcceptedRejects.count(File)) << File << " is listed but refused";
  Live.ExpectMadeSince(0);

  std::printf("json-test-suite: %zu cases; of the must-accept ones %d loaded into a tree, %d are "
              "a simple value at the top level; %d round trips; %d compared with RapidJSON, %d "
              "refused by it; %zu must-reject cases accepted\n",
              Cases.size(), Loaded, TopLevelSimple, RoundTrips, ComparedWithRapidJSON,
              RapidJSONRefused, AcceptedRejects.size());
}

TEST(JSONCorpus, FormInputsLoadIntoTrees) {
  struct TSource {
    const char* File;
    const char* Field; // the member that holds the form text; nil: the line is the text
  };
  const TSource Sources[] = {{"qs-parse-inputs.jsonl", nullptr},
                             {"qs-empty-keys-cases.jsonl", "input"},
                             {"w3c-json-form.jsonl", "form"}};
  std::map<std::string, int> Outcomes;
  int Inputs = 0;
  const test::TLiveCount Live;
  for (const TSource& Source : Sources) {
    std::ifstream In(CorpusDir() + "form-urlencoded/" + Source.File);
    for (std::string Line; std::getline(In, Line);) {
      rapidjson::Document Parsed;
      Parsed.Parse(Line.data(), Line.size());
      ASSERT_FALSE(Parsed.HasParseError()) << Line;
      const rapidjson::Value& Text = Source.Field ? Parsed[Source.Field] : Parsed;
      const std::string Form(Text.GetString(), Text.GetStringLength());
      std::string Failure;
      TOwned<TLxJSONDocument> Document(Load(Form, Form, Failure, /*AIsForm=*/true));
      if (Document)
        Document->GetAsJSON();
      ++Outcomes[Failure.empty() ? "loaded" : Failure.substr(0, 48)];
      ++Inputs;
    }
  }
  EXPECT_EQ(Inputs, 288);
  Live.ExpectMadeSince(0);
  std::printf("form-urlencoded: %d inputs:", Inputs);
  for (const auto& [Outcome, Count] : Outcomes)
    std::printf(" %s %d;", Outcome.c_str(), Count);
  std::printf("\n");
}

} // namespace
} // namespace lorvane
