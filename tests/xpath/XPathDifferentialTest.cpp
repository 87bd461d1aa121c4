// Path selection compared with libxml2's XPath over the conformance documents that load in both
// and over generated documents: paths of the subset both languages share, positions translated
// (here from 0, there from 1), compared as sets of nodes. Paths are generated outside the rules
// in which the two languages differ on purpose (see Rules below).
#include "lorvane/core/LxStreams.h"
#include "lorvane/uLxXPath.h"

#include <gtest/gtest.h>

#include "support/XmlConfManifest.h"

#ifdef LORVANE_HAVE_LIBXML2
#include <libxml/parser.h>
#include <libxml/xpath.h>
#endif

// GCC 12 warns falsely of overlapping copies in the string concatenations below (its bug 105329).
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wrestrict"
#endif

#include <filesystem>
#include <fstream>
#include <random>
#include <set>
#include <sstream>

namespace lorvane {
namespace {

#ifdef LORVANE_HAVE_LIBXML2

// Rules: the generator leaves out what the two languages do differently by design.
// - Names with a prefix, and documents that declare namespaces or have a document type: here a
//   name compares prefix and local name, there namespace URIs (and a DTD adds nodes).
// - Attribute values with '"', '/', '[', ']' or '|': here "|" splits alternatives anywhere and a
//   "/" behind a filter's nested "]" ends the step; there they are plain text.
// - "." right behind ".", ".." behind "//", "@" as the first step from the document or behind
//   "..": here "./." selects nothing, "//.." is an error and "@" on the document means the root's
//   attributes.
// - Names that begin with "not" inside a filter: here "not" is a keyword at an operand's start.
// - "and" mixed with "or": here they fold left to right with one rank.
// - A comparison beside "or": here a comparison whose path finds nothing is empty, and an empty
//   operand rejects the node even where another operand of the "or" holds.
// - text(), node() and "." on conformance documents: entity references and merged text make
//   the character data of the two trees differ.

/// A node's place, the same in both trees: from the document down, the number of each element,
/// character data or other child among its parent's children of its kind, and attribute names.
std::string PlaceOf(TLxDOMNode* ANode) {
  std::string Place;
  while (ANode && ANode->GetNodeType() != ntDocument) {
    TLxDOMNode* Parent = ANode->ParentNode();
    std::string Step;
    if (ANode->GetNodeType() == ntAttribute)
      Step = "@" + StringToUTF8(ANode->GetQualifiedName());
    else {
      const bool IsText = ANode->GetNodeType() == ntText || ANode->GetNodeType() == ntCDATA;
      int Index = 0;
      for (TLxDOMNode* Sibling : *Parent->ChildNodes()) {
        if (Sibling == ANode)
          break;
        const bool SiblingText =
            Sibling->GetNodeType() == ntText || Sibling->GetNodeType() == ntCDATA;
        if (IsText ? SiblingText : Sibling->GetNodeType() == ANode->GetNodeType())
          ++Index;
      }
      Step = (IsText ? "t" : ANode->GetNodeType() == ntElement ? "e" : "o") + std::to_string(Index);
    }
    Place = "/" + Step + Place;
    ANode = Parent;
  }
  return Place.empty() ? "/" : Place;
}

std::string PlaceOf(xmlNodePtr ANode) {
  std::string Place;
  while (ANode && ANode->type != XML_DOCUMENT_NODE) {
    xmlNodePtr Parent = ANode->parent;
    std::string Step;
    if (ANode->type == XML_ATTRIBUTE_NODE) {
      Step = "@";
      if (ANode->ns && ANode->ns->prefix)
        Step += std::string(reinterpret_cast<const char*>(ANode->ns->prefix)) + ":";
      Step += reinterpret_cast<const char*>(ANode->name);
    } else {
      auto IsText = [](xmlNodePtr N) {
        return N->type == XML_TEXT_NODE || N->type == XML_CDATA_SECTION_NODE;
      };
      auto Kind = [&](xmlNodePtr N) {
        return IsText(N) ? 't' : N->type == XML_ELEMENT_NODE ? 'e' : 'o';
      };
      int Index = 0;
      for (xmlNodePtr S = Parent->children; S && S != ANode; S = S->next)
        if (Kind(S) == Kind(ANode) && (Kind(S) != 'o' || S->type == ANode->type))
          ++Index;
      Step = std::string(1, Kind(ANode)) + std::to_string(Index);
    }
    Place = "/" + Step + Place;
    ANode = Parent;
  }
  return Place.empty() ? "/" : Place;
}

struct TNames {
  std::vector<std::string> Elements;
  std::vector<std::string> Attributes;
  std::vector<std::string> Values;
};

void Collect(TLxDOMNode* ANode, TNames& ANames) {
  std::set<std::string> E, A, V;
  std::vector<TLxDOMNode*> Stack{ANode};
  while (!Stack.empty()) {
    TLxDOMNode* N = Stack.back();
    Stack.pop_back();
    if (N->GetNodeType() == ntElement)
      E.insert(StringToUTF8(N->GetQualifiedName()));
    if (N->GetNodeType() == ntAttribute) {
      A.insert(StringToUTF8(N->GetQualifiedName()));
      V.insert(StringToUTF8(N->GetNodeValue()));
    }
    if (N->HasChilds())
      for (TLxDOMNode* C : *N->ChildNodes())
        Stack.push_back(C);
  }
  auto Usable = [](const std::string& S, const char* ABad) {
    return !S.empty() && S.find_first_of(ABad) == std::string::npos;
  };
  for (const std::string& S : E)
    if (Usable(S, ":"))
      ANames.Elements.push_back(S);
  for (const std::string& S : A)
    if (Usable(S, ":"))
      ANames.Attributes.push_back(S);
  for (const std::string& S : V)
    if (S.find_first_of("\"/[]|") == std::string::npos)
      ANames.Values.push_back(S);
}

/// One path in both spellings.
struct TPathPair {
  std::string Ours;
  std::string Theirs;
};

class TGenerator {
public:
  TGenerator(const TNames& ANames, bool ACharacterData, unsigned ASeed)
      : FNames(ANames), FCharacterData(ACharacterData), FRandom(ASeed) {}

  TPathPair Path() {
    TPathPair Result = Alternative();
    if (Chance(5)) {
      const TPathPair Other = Alternative();
      Result.Ours += "|" + Other.Ours;
      Result.Theirs += "|" + Other.Theirs;
    }
    return Result;
  }

private:
  const TNames& FNames;
  bool FCharacterData;
  std::mt19937 FRandom;

  bool Chance(int AOneIn) { return std::uniform_int_distribution<int>(1, AOneIn)(FRandom) == 1; }
  template <class T> const T& Pick(const std::vector<T>& AList) {
    return AList[std::uniform_int_distribution<size_t>(0, AList.size() - 1)(FRandom)];
  }
  std::string Name() { return FNames.Elements.empty() ? "zz" : Pick(FNames.Elements); }

  TPathPair Alternative() {
    TPathPair P;
    const int Start = std::uniform_int_distribution<int>(0, 2)(FRandom);
    std::string Separator = Start == 0 ? "" : Start == 1 ? "/" : "//";
    std::string Previous;
    const int Steps = std::uniform_int_distribution<int>(1, 4)(FRandom);
    for (int I = 0; I < Steps; ++I) {
      const bool Last = I == Steps - 1;
      const bool FromDocument = I == 0;
      std::string Step;
      bool Filterable = true;
      const int Kind = std::uniform_int_distribution<int>(0, 9)(FRandom);
      if (Kind <= 4)
        Step = Name();
      else if (Kind == 5)
        Step = "*";
      else if (Kind == 6 && Last && !(FromDocument && Separator != "//") && Previous != ".." &&
               !FNames.Attributes.empty())
        Step = Chance(3) ? "@*" : "@" + Pick(FNames.Attributes);
      else if (Kind == 7 && FCharacterData)
        Step = Chance(2) ? "text()" : "node()";
      else if (Kind == 8 && !FromDocument && Separator == "/" && Previous != "..") {
        Step = "..";
        Filterable = false;
      } else if (Kind == 9 && Previous != "." && (FCharacterData || Separator == "/") &&
                 !FromDocument) {
        Step = ".";
        Filterable = false;
      } else
        Step = Name();
      TPathPair Filter;
      if (Filterable && Chance(3))
        Filter = Filters();
      P.Ours += Separator + Step + Filter.Ours;
      P.Theirs += Separator + Step + Filter.Theirs;
      Previous = Step;
      Separator = Chance(4) ? "//" : "/";
    }
    return P;
  }

  TPathPair Test(bool AComparison) {
    const int Kind = std::uniform_int_distribution<int>(AComparison ? 0 : 1, 2)(FRandom);
    if (Kind == 0 && !FNames.Attributes.empty() && !FNames.Values.empty()) {
      const std::string T = "@" + Pick(FNames.Attributes) + "=\"" + Pick(FNames.Values) + "\"";
      return {T, T};
    }
    if (Kind == 1 && !FNames.Attributes.empty()) {
      const std::string T = "not(@" + Pick(FNames.Attributes) + ")";
      return {T, T};
    }
    std::string N = Name();
    if (N.size() >= 3 && (N[0] == 'n' || N[0] == 'N') && (N[1] == 'o' || N[1] == 'O') &&
        (N[2] == 't' || N[2] == 'T'))
      N = "*";
    return {N, N};
  }

  TPathPair Filters() {
    if (Chance(2)) {
      const int Position = std::uniform_int_distribution<int>(0, 2)(FRandom);
      return {"[" + std::to_string(Position) + "]", "[" + std::to_string(Position + 1) + "]"};
    }
    const bool Or = Chance(2);
    const int More = std::uniform_int_distribution<int>(0, 2)(FRandom);
    const bool Comparisons = !Or || More == 0;
    TPathPair Result = Test(Comparisons);
    const char* Operator = Or ? " or " : " and ";
    for (int I = 0; I < More; ++I) {
      const TPathPair Next = Test(Comparisons);
      Result.Ours += Operator + Next.Ours;
      Result.Theirs += Operator + Next.Theirs;
    }
    return {"[" + Result.Ours + "]", "[" + Result.Theirs + "]"};
  }
};

void Silent(void*, xmlErrorPtr) {}

struct TCounts {
  int Documents = 0;
  int Paths = 0;
  int Failures = 0;
  int NonEmpty = 0; ///< paths that selected at least one node
};

/// Compares APaths paths on the document in AText; records mismatches as test failures.
void Compare(const std::string& AText, bool ACharacterData, int APaths, unsigned ASeed,
             TCounts& ACounts) {
  TOwned<TLxDOMDocument> Ours(New<TLxDOMDocument>());
  try {
    TOwned<TLxMemoryStream> Input(New<TLxMemoryStream>(static_cast<const void*>(AText.data()),
                                                       static_cast<Int64>(AText.size())));
    Ours->LoadFromStream(Input.get());
  } catch (const Exception&) {
    return;
  }
  if (!Ours->GetRootNode())
    return;
  xmlDocPtr Theirs = xmlReadMemory(AText.data(), static_cast<int>(AText.size()), "doc.xml", nullptr,
                                   XML_PARSE_NONET);
  if (!Theirs)
    return;
  ++ACounts.Documents;
  TNames Names;
  Collect(Ours.get(), Names);
  TGenerator Generator(Names, ACharacterData, ASeed);
  xmlXPathContextPtr Context = xmlXPathNewContext(Theirs);
  for (int I = 0; I < APaths; ++I) {
    const TPathPair Path = Generator.Path();
    Context->node = reinterpret_cast<xmlNodePtr>(Theirs);
    xmlXPathObjectPtr Result =
        xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(Path.Theirs.c_str()), Context);
    if (!Result)
      continue;
    std::set<std::string> Expected;
    if (Result->nodesetval)
      for (int K = 0; K < Result->nodesetval->nodeNr; ++K)
        Expected.insert(PlaceOf(Result->nodesetval->nodeTab[K]));
    xmlXPathFreeObject(Result);
    std::set<std::string> Got;
    try {
      TOwned<TLxDOMNodeList> List(
          Ours->CreateNodeList(UTF8ToString(Path.Ours), {soCaseSensitive, soQualifiedName}));
      for (TLxDOMNode* Node : *List)
        Got.insert(PlaceOf(Node));
    } catch (const Exception& E) {
      ADD_FAILURE() << Path.Ours << " raised " << E.what();
      ++ACounts.Failures;
      continue;
    }
    ++ACounts.Paths;
    ACounts.NonEmpty += Expected.empty() ? 0 : 1;
    if (Got != Expected) {
      ++ACounts.Failures;
      std::ostringstream Text;
      for (const std::string& S : Got)
        Text << S << ' ';
      Text << "| libxml2: ";
      for (const std::string& S : Expected)
        Text << S << ' ';
      ADD_FAILURE() << Path.Ours << " (" << Path.Theirs << "): " << Text.str();
    }
  }
  xmlXPathFreeContext(Context);
  xmlFreeDoc(Theirs);
}

/// A random tree of a few names, attributes and (never adjacent) character data.
std::string GeneratedDocument(std::mt19937& ARandom) {
  const char* Names[] = {"a", "b", "c", "d"};
  const char* Values[] = {"1", "2", "v"};
  auto Int = [&](int ALow, int AHigh) {
    return std::uniform_int_distribution<int>(ALow, AHigh)(ARandom);
  };
  std::string Text;
  struct TOpen {
    std::string Name;
    int ChildrenLeft;
    bool LastWasText;
  };
  std::vector<TOpen> Stack;
  auto Open = [&](int ADepth) {
    const std::string Name = Names[Int(0, 3)];
    Text += "<" + Name;
    if (Int(0, 1))
      Text += std::string(" x=\"") + Values[Int(0, 2)] + "\"";
    if (Int(0, 2) == 0)
      Text += std::string(" y=\"") + Values[Int(0, 2)] + "\"";
    Text += ">";
    Stack.push_back({Name, ADepth < 4 ? Int(0, 4) : 0, false});
  };
  Open(0);
  while (!Stack.empty()) {
    TOpen& Top = Stack.back();
    if (Top.ChildrenLeft-- <= 0) {
      Text += "</" + Top.Name + ">";
      Stack.pop_back();
      continue;
    }
    if (!Top.LastWasText && Int(0, 3) == 0) {
      Top.LastWasText = true;
      Text += Int(0, 4) == 0 ? "<![CDATA[c]]>" : "t";
      continue;
    }
    Top.LastWasText = false;
    Open(static_cast<int>(Stack.size()));
  }
  return Text;
}

TEST(XPathDifferential, SelectsWhatLibxml2SelectsOverTheSharedSubset) {
  xmlSetStructuredErrorFunc(nullptr, Silent);
  TCounts Counts;
  std::mt19937 Random(20240611);
  for (int I = 0; I < 300; ++I)
    Compare(GeneratedDocument(Random), true, 60, 1000 + I, Counts);
  const int Generated = Counts.Paths;

  int Loaded = 0;
  for (const test::XmlConfDocument& Entry : test::ReadXmlConfManifest()) {
    std::ifstream File(test::XmlConfDir() + Entry.Input, std::ios::binary);
    std::string Text((std::istreambuf_iterator<char>(File)), std::istreambuf_iterator<char>());
    if (Text.empty() || Text.find("<!DOCTYPE") != std::string::npos ||
        Text.find("xmlns") != std::string::npos)
      continue;
    const int Before = Counts.Documents;
    Compare(Text, false, 25, 7 + Loaded, Counts);
    Loaded += Counts.Documents - Before;
  }
  std::printf("compared %d paths: %d on generated documents, %d on %d conformance documents; "
              "%d select nodes, %d differ\n",
              Counts.Paths, Generated, Counts.Paths - Generated, Loaded, Counts.NonEmpty,
              Counts.Failures);
  EXPECT_GT(Counts.NonEmpty, Counts.Paths / 4);
  EXPECT_GT(Generated, 10000);
  EXPECT_GT(Loaded, 50);
  EXPECT_EQ(Counts.Failures, 0);
}

#else

TEST(XPathDifferential, SelectsWhatLibxml2SelectsOverTheSharedSubset) {
  GTEST_SKIP() << "libxml2 is not installed";
}

#endif

} // namespace
} // namespace lorvane
