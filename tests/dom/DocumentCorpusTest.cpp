// Saving and loading again: a document comes back as the same tree, and saving that tree gives
// the same bytes. Over the W3C conformance documents too, each of which loads or fails with a
// documented exception; a well-formed one fails only where the reader's rules refuse it.
#include "dom/DomFixtures.h"
#include "lorvane/core/LxStreams.h"
#include "support/XmlConfManifest.h"

#include <algorithm>
#include <cstring>
#include <iostream>
#include <map>
#include <string>
#include <typeinfo>
#include <vector>

namespace lorvane {
namespace {

// --- comparing trees ----------------------------------------------------------------------------

/// What a node holds beside its name, in the form the document holds it: the stored value of
/// attributes, text, CDATA and comments, the data of a processing instruction. A double quote in
/// an attribute value (read from single quotes) counts as the "&quot;" the writer makes of it.
UnicodeString StoredValue(TLxDOMNode* ANode) {
  switch (ANode->GetNodeType()) {
  case ntAttribute: {
    UnicodeString Value;
    for (char16_t Char : static_cast<TLxDOMAttribute*>(ANode)->GetStoredValue())
      Char == u'"' ? Value.append(u"&quot;") : Value.append(1, Char);
    return Value;
  }
  case ntText:
  case ntCDATA:
  case ntComment:
    return static_cast<TLxDOMCharacterData*>(ANode)->GetStoredValue();
  case ntProcessingInstruction:
    return static_cast<TLxDOMProcessingInstruction*>(ANode)->GetData();
  default:
    return {};
  }
}

/// A value for a failure message: UTF-8, quoted, cut after 60 characters.
std::string Shown(const UnicodeString& AValue) {
  std::string Text = StringToUTF8(AValue.substr(0, 60));
  return '"' + Text + (AValue.size() > 60 ? "\"..." : "\"");
}

/// One step of a path: "@name" for an attribute, else "name[position]" counting all children of
/// the parent from 1.
std::string Step(TLxDOMNode* ANode, Integer AIndex) {
  const std::string Name = StringToUTF8(ANode->GetQualifiedName());
  if (ANode->GetNodeType() == ntAttribute)
    return '@' + Name;
  return Name + '[' + std::to_string(AIndex + 1) + ']';
}

/// The difference between two nodes themselves, children left aside; empty when none.
std::string NodeDifference(TLxDOMNode* AFirst, TLxDOMNode* ASecond, const std::string& APath) {
  const std::string At = APath.empty() ? "/" : APath;
  if (AFirst->GetNodeType() != ASecond->GetNodeType())
    return At + ": kind " + std::to_string(AFirst->GetNodeType()) + " vs " +
           std::to_string(ASecond->GetNodeType());
  if (AFirst->GetQualifiedName() != ASecond->GetQualifiedName())
    return At + ": name " + Shown(AFirst->GetQualifiedName()) + " vs " +
           Shown(ASecond->GetQualifiedName());
  if (const UnicodeString First = StoredValue(AFirst), Second = StoredValue(ASecond);
      First != Second)
    return At + ": value " + Shown(First) + " vs " + Shown(Second);
  return {};
}

/// Whether the writer writes AElement as an empty tag: it has no child element, text, CDATA or
/// comment, so that processing instructions under it are left out.
bool WrittenEmpty(TLxDOMNode* AElement) {
  if (AElement->GetNodeType() != ntElement)
    return false;
  for (TLxDOMNode* Child : *AElement->ChildNodes())
    if (Child->GetNodeType() != ntAttribute && Child->GetNodeType() != ntProcessingInstruction)
      return false;
  return true;
}

/// The children that are compared: all of them, or with AAsWritten only those that the writer
/// writes.
std::vector<TLxDOMNode*> ComparedChildren(TLxDOMNode* ANode, bool AAsWritten) {
  std::vector<TLxDOMNode*> Children;
  if (ANode->NodeCount() == 0)
    return Children;
  const bool OnlyAttributes = AAsWritten && WrittenEmpty(ANode);
  for (TLxDOMNode* Child : *ANode->ChildNodes())
    if (!OnlyAttributes || Child->GetNodeType() == ntAttribute)
      Children.push_back(Child);
  return Children;
}

/// Where two trees first differ in document order (kinds, names, values, then the children,
/// attributes included, in order), as a path from the given nodes; empty when they are equal.
/// With AAsWritten, processing instructions that the writer leaves out are not compared. Walks
/// with a stack of its own, as deep as the trees are.
std::string FirstDifference(TLxDOMNode* AFirst, TLxDOMNode* ASecond, bool AAsWritten = false) {
  if (std::string Difference = NodeDifference(AFirst, ASecond, {}); !Difference.empty())
    return Difference;
  struct TOpen {
    std::vector<TLxDOMNode*> First, Second;
    std::size_t Next;
    std::string Path;
  };
  std::vector<TOpen> Open;
  Open.push_back(
      {ComparedChildren(AFirst, AAsWritten), ComparedChildren(ASecond, AAsWritten), 0, {}});
  while (!Open.empty()) {
    TOpen& Top = Open.back();
    if (Top.Next >= Top.First.size() || Top.Next >= Top.Second.size()) {
      if (Top.First.size() != Top.Second.size()) {
        const bool FirstLonger = Top.First.size() > Top.Second.size();
        TLxDOMNode* Extra = (FirstLonger ? Top.First : Top.Second)[Top.Next];
        return Top.Path + '/' + Step(Extra, Integer(Top.Next)) +
               (FirstLonger ? ": only in the first tree" : ": only in the second tree");
      }
      Open.pop_back();
      continue;
    }
    const std::size_t Index = Top.Next++;
    TLxDOMNode* First = Top.First[Index];
    TLxDOMNode* Second = Top.Second[Index];
    std::string Path = Top.Path + '/' + Step(First, Integer(Index));
    if (std::string Difference = NodeDifference(First, Second, Path); !Difference.empty())
      return Difference;
    // Top is not used past this point: the push may move it.
    Open.push_back({ComparedChildren(First, AAsWritten), ComparedChildren(Second, AAsWritten), 0,
                    std::move(Path)});
  }
  return {};
}

// --- loading and saving -------------------------------------------------------------------------

/// How a load ended: Outcome is "loaded" or the class of one of the failures a detecting load
/// can give: ELxDomSyntax for a fatal error of the text (every failure inside the reader comes
/// out as this, JSON's too), EEncodingError for an encoding name that isn't known. Anything else
/// is "undocumented ...".
struct LoadResult {
  std::string Outcome;
  std::string Message;
};

LoadResult Load(TLxDOMDocument* ADocument, TStream* AStream) {
  const auto Undocumented = [](const std::exception& E) {
    return LoadResult{std::string("undocumented ") + typeid(E).name(), E.what()};
  };
  try {
    ADocument->LoadFromStream(AStream);
    return {"loaded", {}};
  } catch (const ELxDomSyntax& E) {
    return typeid(E) == typeid(ELxDomSyntax) ? LoadResult{"ELxDomSyntax", E.what()}
                                             : Undocumented(E);
  } catch (const EEncodingError& E) {
    return typeid(E) == typeid(EEncodingError) ? LoadResult{"EEncodingError", E.what()}
                                               : Undocumented(E);
  } catch (const std::exception& E) {
    return Undocumented(E);
  }
}

/// The document in UTF-8, compact, without byte order mark.
std::string Save(TLxDOMDocument* ADocument) {
  TOwned<TMemoryStream> Stream(New<TMemoryStream>());
  ADocument->SaveToStream(Stream.get(), 65001, /*AFormatted=*/false, /*AWriteBOM=*/false);
  const auto* Bytes = reinterpret_cast<const char*>(Stream->Memory());
  return std::string(Bytes, static_cast<std::size_t>(Stream->GetSize()));
}

/// Loads ASaved, the output of Save, into ADocument. The declaration was copied as it stood, so it
/// may name another encoding than the UTF-8 the bytes are in now: the code page is given. An
/// empty text is an empty tree (read as text it would be taken for JSON).
void LoadSaved(TLxDOMDocument* ADocument, const std::string& ASaved) {
  if (ASaved.empty())
    return;
  TOwned<TLxMemoryStream> Stream(
      New<TLxMemoryStream>(static_cast<const void*>(ASaved.data()), Int64(ASaved.size())));
  ADocument->LoadFromStream(Stream.get(), 65001);
}

/// Whether the tree holds processing instructions that the writer leaves out.
bool HasUnwrittenInstructions(TLxDOMNode* ANode) {
  std::vector<TLxDOMNode*> Pending{ANode};
  while (!Pending.empty()) {
    TLxDOMNode* Node = Pending.back();
    Pending.pop_back();
    if (Node->NodeCount() == 0)
      continue;
    if (WrittenEmpty(Node))
      for (TLxDOMNode* Child : *Node->ChildNodes())
        if (Child->GetNodeType() == ntProcessingInstruction)
          return true;
    for (TLxDOMNode* Child : *Node->ChildNodes())
      Pending.push_back(Child);
  }
  return false;
}

// --- the tree comparison itself -----------------------------------------------------------------

class TreeDifference : public test::LiveObjectsTest {};

TEST_F(TreeDifference, NamesTheFirstDifferingNodeByItsPath) {
  const struct {
    const char16_t* First;
    const char16_t* Second;
    std::string Expected;
  } Cases[] = {
      {u"<a x='1'><b/>t<!--c--><?p d?><![CDATA[s]]></a>",
       u"<a x='1'><b/>t<!--c--><?p d?><![CDATA[s]]></a>", ""},
      {u"<a><b/><c/></a>", u"<a><b/><d/></a>", "/a[1]/c[2]: name \"c\" vs \"d\""},
      {u"<a><b x='1' y='2'/></a>", u"<a><b x='1' y='3'/></a>",
       "/a[1]/b[1]/@y: value \"2\" vs \"3\""},
      {u"<a>x&amp;y</a>", u"<a>x&#38;y</a>", "/a[1]/#text[1]: value \"x&amp;y\" vs \"x&#38;y\""},
      {u"<a><!--one--></a>", u"<a><!--two--></a>", "/a[1]/#comment[1]: value \"one\" vs \"two\""},
      {u"<a><![CDATA[s]]></a>", u"<a>s</a>", "/a[1]/#cdata-section[1]: kind 4 vs 3"},
      {u"<?p one?><a/>", u"<?p two?><a/>", "/p[1]: value \"one\" vs \"two\""},
      {u"<a><b/></a>", u"<a><b/><c/></a>", "/a[1]/c[2]: only in the second tree"},
      {u"<a x='1' y='2'/>", u"<a x='1'/>", "/a[1]/@y: only in the first tree"},
      {u"<a><b><c/></b><d/></a>", u"<a><b><e/></b><f/></a>",
       "/a[1]/b[1]/c[1]: name \"c\" vs \"e\""},
      {u"<a><b><?p?></b></a>", u"<a><b/></a>", "/a[1]/b[1]/p[1]: only in the first tree"},
  };
  for (const auto& Case : Cases) {
    TOwned<TLxDOMDocument> First(TLxDOMDocument::CreateFromXML(Case.First));
    TOwned<TLxDOMDocument> Second(TLxDOMDocument::CreateFromXML(Case.Second));
    EXPECT_EQ(FirstDifference(First.get(), Second.get()), Case.Expected)
        << StringToUTF8(Case.First);
  }
}

TEST_F(TreeDifference, AsWrittenLeavesOutOnlyInstructionsOfElementsWrittenEmpty) {
  TOwned<TLxDOMDocument> First(TLxDOMDocument::CreateFromXML(u"<a><b x='1'><?p?></b><?q?>t</a>"));
  TOwned<TLxDOMDocument> Second(TLxDOMDocument::CreateFromXML(u"<a><b x='1'/>t</a>"));
  EXPECT_EQ(FirstDifference(First.get(), Second.get(), /*AAsWritten=*/true),
            "/a[1]/q[2]: kind 7 vs 3");
  EXPECT_TRUE(HasUnwrittenInstructions(First.get()));
  EXPECT_FALSE(HasUnwrittenInstructions(Second.get()));
}

// --- round trips of small documents -------------------------------------------------------------

class DocumentRoundTrip : public test::LiveObjectsTest {};

TEST_F(DocumentRoundTrip, SavedTextLoadsAsTheSameTree) {
  const struct {
    const char* Input;
    const char* Saved;
  } Cases[] = {
      // A double quote read between single quotes is kept as a reference between double ones.
      {"<a b='x\"y' c='\"'/>", "<a b=\"x&quot;y\" c=\"&quot;\" />"},
      {"<a b=\"it's\" c='&#34;&amp;'/>", "<a b=\"it's\" c=\"&#34;&amp;\" />"},
      // References, CDATA, comments and instructions come back as they were read.
      {"<?xml version=\"1.0\"?>\r\n<!--c--><?p d?><a>x&lt;&#233;<![CDATA[<&]]><!--c2--></a>",
       "<?xml version=\"1.0\"?><!--c--><?p d?><a>x&lt;&#233;<![CDATA[<&]]><!--c2--></a>"},
      {"<a xmlns:p='urn:p'><p:b p:c='1'>t</p:b></a>",
       "<a xmlns:p=\"urn:p\"><p:b p:c=\"1\">t</p:b></a>"},
      // Text that an end tag without start tag lets through to the document isn't kept.
      {"</x>text<a/>", "<a />"},
  };
  for (const auto& Case : Cases) {
    TOwned<TLxDOMDocument> Loaded(New<TLxDOMDocument>());
    TOwned<TLxMemoryStream> Input(
        New<TLxMemoryStream>(static_cast<const void*>(Case.Input), Int64(strlen(Case.Input))));
    ASSERT_EQ(Load(Loaded.get(), Input.get()).Outcome, "loaded") << Case.Input;
    const std::string Saved = Save(Loaded.get());
    EXPECT_EQ(Saved, Case.Saved);
    TOwned<TLxDOMDocument> Reloaded(New<TLxDOMDocument>());
    LoadSaved(Reloaded.get(), Saved);
    EXPECT_EQ(FirstDifference(Loaded.get(), Reloaded.get()), "") << Case.Input;
    EXPECT_EQ(Save(Reloaded.get()), Saved);
  }
  // The decoded value is the one that was read.
  TOwned<TLxDOMDocument> Quoted(TLxDOMDocument::CreateFromXML(u"<a b='x\"y'/>"));
  EXPECT_EQ(Quoted->GetRootNode()->GetAttribute(u"b"), u"x\"y");
}

// --- the corpus ---------------------------------------------------------------------------------

/// Well-formed documents of the corpus that the reader refuses, by the rules it reads by; each
/// entry names the rule. A tree can't be loaded from them.
const std::map<std::string, std::string> RefusedWellFormed = {
    {"valid-sa-054", "white space before the end of a start tag starts an attribute"},
    {"o-p40pass2", "white space before the end of a start tag starts an attribute"},
    {"o-p44pass4", "white space before the end of a start tag starts an attribute"},
    {"o-p42pass2", "an end tag has white space before its '>'"},
    {"pr-xml-little", "a comment in the internal subset holds a declaration"},
    {"pr-xml-utf-8", "a comment in the internal subset holds a declaration"},
    {"pr-xml-utf-16", "a comment in the internal subset holds a declaration"},
    {"o-p05pass1", "a local name behind a prefix starts with '.'"},
    {"ibm-1-1-valid-P05-ibm05v01.xml", "a name ends with ':', leaving no local name"},
    {"x-ibm-1-0.5-valid-P05-ibm05v01.xml", "a name ends with ':', leaving no local name"},
    {"x-ibm-1-0.5-valid-P04-ibm04v01.xml", "a name starts with ':'"},
    {"rmt-017", "a name starts with a character beyond U+FFFF"},
    {"rmt-018", "a name starts with a character beyond U+FFFF"},
    {"x-rmt5-016", "a name starts with a character beyond U+FFFF"},
    {"x-rmt5-019", "a name starts with a character beyond U+FFFF"},
};

TEST_F(DocumentRoundTrip, EveryCorpusDocumentLoadsOrFailsAsDocumentedAndSavesToTheSameTree) {
  const std::vector<test::XmlConfDocument> Documents = test::ReadXmlConfManifest();
  ASSERT_GT(Documents.size(), 1000u) << "manifest not found under " << test::XmlConfDir();

  struct Counts {
    int Documents = 0, WithoutDOCTYPE = 0, Loaded = 0, RoundTripped = 0;
    std::map<std::string, int> Refused;
  } WellFormed, Others; // well-formed: marked valid or invalid, which breaks only DTD rules
  int ValidWithoutDOCTYPE = 0, UnwrittenInstructions = 0;
  std::vector<std::string> Refusals;

  for (const test::XmlConfDocument& Doc : Documents) {
    const std::string Path = test::XmlConfDir() + Doc.Input;
    const bool IsWellFormed = Doc.Type == "valid" || Doc.Type == "invalid";
    Counts& Group = IsWellFormed ? WellFormed : Others;
    ++Group.Documents;
    const bool WithoutDOCTYPE = !test::HasKeyword(test::ReadBytes(Path), "<!DOCTYPE");
    Group.WithoutDOCTYPE += WithoutDOCTYPE;
    ValidWithoutDOCTYPE += WithoutDOCTYPE && Doc.Type == "valid";

    TOwned<TLxDOMDocument> Loaded(New<TLxDOMDocument>());
    LoadResult Result;
    {
      TOwned<TFileStream> File(New<TFileStream>(UTF8ToString(Path), fmOpenRead | fmShareDenyWrite));
      Result = Load(Loaded.get(), File.get());
    }
    const bool Known = RefusedWellFormed.count(Doc.Id) != 0;
    if (IsWellFormed) {
      EXPECT_EQ(Result.Outcome != "loaded", Known)
          << Doc.Id << " (" << Doc.Input << "): " << Result.Outcome << " " << Result.Message;
    }
    if (Result.Outcome != "loaded") {
      EXPECT_EQ(Result.Outcome.rfind("undocumented", 0), std::string::npos)
          << Doc.Id << ": " << Result.Outcome << " " << Result.Message;
      ++Group.Refused[Result.Outcome];
      if (IsWellFormed) {
        std::replace_if(
            Result.Message.begin(), Result.Message.end(),
            [](char C) { return C == '\r' || C == '\n'; }, ' ');
        Refusals.push_back(Doc.Id + " (" + Result.Message + ")");
      }
      continue;
    }
    ++Group.Loaded;

    const std::string Saved = Save(Loaded.get());
    TOwned<TLxDOMDocument> Reloaded(New<TLxDOMDocument>());
    try {
      LoadSaved(Reloaded.get(), Saved);
    } catch (const std::exception& E) {
      ADD_FAILURE() << Doc.Id << ": the saved text doesn't load: " << E.what() << "\n" << Saved;
      continue;
    }
    const std::string Difference = FirstDifference(Loaded.get(), Reloaded.get(), true);
    EXPECT_EQ(Difference, "") << Doc.Id << " (" << Doc.Input << ")";
    const std::string Resaved = Save(Reloaded.get());
    EXPECT_EQ(Resaved, Saved) << Doc.Id << " (" << Doc.Input << "): not a fixed point";
    Group.RoundTripped += Difference.empty() && Resaved == Saved;
    UnwrittenInstructions += HasUnwrittenInstructions(Loaded.get());
  }

  const auto Line = [](const char* AName, const Counts& AGroup) {
    std::string Text = std::string(AName) + ": " + std::to_string(AGroup.Documents) + " (" +
                       std::to_string(AGroup.WithoutDOCTYPE) + " without DOCTYPE), loaded " +
                       std::to_string(AGroup.Loaded) + ", round-tripped " +
                       std::to_string(AGroup.RoundTripped) + ", refused:";
    for (const auto& [Class, Count] : AGroup.Refused)
      Text += ' ' + Class + '=' + std::to_string(Count);
    return Text;
  };
  const std::string Summary = Line("valid or invalid", WellFormed) +
                              " (valid without DOCTYPE: " + std::to_string(ValidWithoutDOCTYPE) +
                              "); " + Line("not-wf or error", Others) +
                              "; instructions under elements written empty in " +
                              std::to_string(UnwrittenInstructions);
  std::cout << "[xmlconf tree] " << Summary << "\n";
  for (const std::string& Refusal : Refusals)
    std::cout << "[xmlconf tree]   refused well-formed " << Refusal << "\n";
  RecordProperty("counts", Summary);
  EXPECT_EQ(WellFormed.Loaded + int(RefusedWellFormed.size()), WellFormed.Documents);
  EXPECT_EQ(WellFormed.RoundTripped, WellFormed.Loaded);
  EXPECT_EQ(Others.RoundTripped, Others.Loaded);
}

} // namespace
} // namespace lorvane
