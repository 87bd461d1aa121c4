// Text, comments, CDATA sections and processing instructions: stored and decoded values, edits,
// splitting, clones and their interfaces.
#include "dom/DomFixtures.h"

#include <climits>
#include <initializer_list>
#include <iterator>
#include <string>

namespace lorvane {
namespace {

class DomCharacterData : public test::LiveObjectsTest {};

/// A free-standing node of class T whose stored form is AStored; the caller owns it.
template <class T> T* MakeStored(const UnicodeString& AStored) {
  T* Node = New<T>();
  Node->SetStoredValue(AStored);
  return Node;
}

/// Counts the nodes added to it, to show that splitting goes through the parent's own AddChild.
class TCountingParent : public TLxDOMNode {
  LX_CLASS(TCountingParent, TLxDOMNode)
  using TLxDOMNode::AddChild;
  TLxDOMNode* AddChild(TLxDOMNode* ANode, TLxDOMNode* ARefNode, TLxDOMPosition APos) override {
    ++Added;
    return inherited::AddChild(ANode, ARefNode, APos);
  }
  int Added = 0;

protected:
  ~TCountingParent() override = default;
};

TEST_F(DomCharacterData, TextIsStoredEscapedAndReadDecoded) {
  struct {
    std::u16string_view Value, Stored;
  } const Cases[] = {
      {u"a<b", u"a&lt;b"},
      {u"x & y > z", u"x &amp; y &gt; z"},
      {u"'\"", u"&apos;&quot;"},
      {u"tab\tline\n", u"tab&#9;line&#10;"},
      {u"caf\u00e9 \U0001F600", u"caf\u00e9 \U0001F600"},
  };
  for (const auto& Case : Cases) {
    SCOPED_TRACE(StringToUTF8(Case.Value));
    // The base class keeps the text form as text does.
    TOwned<TLxDOMCharacterData> Base(New<TLxDOMCharacterData>());
    TOwned<TLxDOMText> Text(New<TLxDOMText>());
    for (TLxDOMCharacterData* Node :
         std::initializer_list<TLxDOMCharacterData*>{Base.get(), Text.get()}) {
      Node->SetNodeValue(UnicodeString(Case.Value));
      EXPECT_EQ(Node->GetStoredValue(), Case.Stored);
      EXPECT_EQ(Node->GetNodeValue(), Case.Value);
      EXPECT_EQ(Node->GetData(), Case.Value);
    }
  }
}

TEST_F(DomCharacterData, StoredTextKeepsItsReferencesUntilItIsRewritten) {
  TOwned<TLxDOMText> Text(MakeStored<TLxDOMText>(u"a &amp; b &#65;&#x3c;"));
  EXPECT_EQ(Text->GetNodeValue(), u"a & b A<");
  EXPECT_EQ(Text->GetStoredValue(), u"a &amp; b &#65;&#x3c;");
  // Any edit stores the freshly escaped value: the reference for "A" is not restored.
  Text->AppendStr(u"'");
  EXPECT_EQ(Text->GetStoredValue(), u"a &amp; b A&lt;&apos;");
  Text->SetData(u"&");
  EXPECT_EQ(Text->GetStoredValue(), u"&amp;");
}

TEST_F(DomCharacterData, CommentAndCDATAKeepTheirValueAsItIs) {
  const UnicodeString Value = u"<a> -- &amp; ]]";
  TOwned<TLxDOMComment> Comment(New<TLxDOMComment>());
  TOwned<TLxDOMCDATA> CDATA(New<TLxDOMCDATA>());
  for (TLxDOMCharacterData* Node :
       std::initializer_list<TLxDOMCharacterData*>{Comment.get(), CDATA.get()}) {
    SCOPED_TRACE(StringToUTF8(Node->ClassName()));
    Node->SetNodeValue(Value);
    EXPECT_EQ(Node->GetStoredValue(), Value);
    EXPECT_EQ(Node->GetNodeValue(), Value);
    Node->AppendStr(u"&lt;");
    EXPECT_EQ(Node->GetStoredValue(), Value + u"&lt;");
  }
}

enum class TEdit { Substring, AppendStr, InsertStr, DeleteStr, ReplaceStr };

TEST_F(DomCharacterData, EditsWorkOnTheDecodedValueAndClampTheirNumbers) {
  // The value is "a&b<cd", six characters. Substring rows give the result, the others the new
  // value. An offset below 1 counts as 1; beyond the end, what exists is used.
  struct {
    TEdit Edit;
    Integer Offset, Count;
    std::u16string_view Data, Expected;
  } const Cases[] = {
      {TEdit::Substring, 2, 3, u"", u"&b<"},
      {TEdit::Substring, 0, 2, u"", u"a&"},
      {TEdit::Substring, -5, 1, u"", u"a"},
      {TEdit::Substring, 5, 100, u"", u"cd"},
      {TEdit::Substring, 7, 1, u"", u""},
      {TEdit::Substring, 2, 0, u"", u""},
      {TEdit::Substring, 2, -1, u"", u""},
      {TEdit::Substring, INT_MAX, INT_MAX, u"", u""},
      {TEdit::AppendStr, 0, 0, u"&>", u"a&b<cd&>"},
      {TEdit::InsertStr, 2, 0, u"\"", u"a\"&b<cd"},
      {TEdit::InsertStr, 0, 0, u"<", u"<a&b<cd"},
      {TEdit::InsertStr, 7, 0, u"!", u"a&b<cd!"},
      {TEdit::InsertStr, INT_MAX, 0, u"!", u"a&b<cd!"},
      {TEdit::DeleteStr, 2, 2, u"", u"a<cd"},
      {TEdit::DeleteStr, 0, 1, u"", u"&b<cd"},
      {TEdit::DeleteStr, 5, 100, u"", u"a&b<"},
      {TEdit::DeleteStr, 7, 1, u"", u"a&b<cd"},
      {TEdit::DeleteStr, 2, INT_MAX, u"", u"a"},
      {TEdit::DeleteStr, 2, -3, u"", u"a&b<cd"},
      {TEdit::ReplaceStr, 2, 3, u"'", u"a'cd"},
      {TEdit::ReplaceStr, 1, 0, u">", u">a&b<cd"},
      {TEdit::ReplaceStr, -2, 1, u"x", u"x&b<cd"},
      {TEdit::ReplaceStr, 5, 100, u"&", u"a&b<&"},
      {TEdit::ReplaceStr, INT_MAX, INT_MAX, u"!", u"a&b<cd!"},
  };
  for (std::size_t I = 0; I < std::size(Cases); ++I) {
    const auto& Case = Cases[I];
    SCOPED_TRACE("row " + std::to_string(I));
    TOwned<TLxDOMText> Text(MakeStored<TLxDOMText>(u"a&amp;b&lt;cd"));
    const UnicodeString Data(Case.Data);
    switch (Case.Edit) {
    case TEdit::Substring:
      EXPECT_EQ(Text->Substring(Case.Offset, Case.Count), Case.Expected);
      EXPECT_EQ(Text->GetStoredValue(), u"a&amp;b&lt;cd");
      continue;
    case TEdit::AppendStr:
      Text->AppendStr(Data);
      break;
    case TEdit::InsertStr:
      Text->InsertStr(Case.Offset, Data);
      break;
    case TEdit::DeleteStr:
      Text->DeleteStr(Case.Offset, Case.Count);
      break;
    case TEdit::ReplaceStr:
      Text->ReplaceStr(Case.Offset, Case.Count, Data);
      break;
    }
    EXPECT_EQ(Text->GetNodeValue(), Case.Expected);
  }
}

TEST_F(DomCharacterData, SplitTextMovesTheRestIntoANewTextBehind) {
  struct {
    Integer Offset;
    std::u16string_view Kept, Rest;
  } const Cases[] = {
      {0, u"", u"a<bcd"},  {2, u"a<", u"bcd"},  {5, u"a<bcd", u""},
      {99, u"a<bcd", u""}, {-1, u"", u"a<bcd"}, {INT_MAX, u"a<bcd", u""},
  };
  for (const auto& Case : Cases) {
    SCOPED_TRACE(Case.Offset);
    TOwned<TCountingParent> Parent(New<TCountingParent>());
    TLxDOMNode* Before = Parent->AppendChild(New<TLxDOMComment>());
    auto* Text = static_cast<TLxDOMText*>(Parent->AppendChild(New<TLxDOMText>()));
    TLxDOMNode* After = Parent->AppendChild(New<TLxDOMComment>());
    Text->SetNodeValue(u"a<bcd");
    const int AddedBefore = Parent->Added;
    TLxDOMText* Rest = Text->SplitText(Case.Offset);
    EXPECT_EQ(Parent->Added, AddedBefore + 1);
    EXPECT_EQ(Rest->ClassType(), TLxDOMText::StaticClass());
    EXPECT_EQ(Text->GetNodeValue(), Case.Kept);
    EXPECT_EQ(Rest->GetNodeValue(), Case.Rest);
    EXPECT_EQ(Before->NextSibling(), Text);
    EXPECT_EQ(Text->NextSibling(), Rest);
    EXPECT_EQ(Rest->NextSibling(), After);
  }
}

TEST_F(DomCharacterData, SplittingCDATAMakesTextThatEscapesTheRest) {
  TOwned<TLxDOMNode> Parent(New<TLxDOMNode>());
  auto* CDATA = static_cast<TLxDOMCDATA*>(Parent->AppendChild(MakeStored<TLxDOMCDATA>(u"x<&y")));
  TLxDOMText* Rest = CDATA->SplitText(1);
  EXPECT_EQ(CDATA->GetStoredValue(), u"x");
  EXPECT_EQ(Rest->ClassType(), TLxDOMText::StaticClass());
  EXPECT_EQ(Rest->GetNodeType(), ntText);
  EXPECT_EQ(Rest->GetStoredValue(), u"&lt;&amp;y");
  EXPECT_EQ(Rest->GetNodeValue(), u"<&y");
  EXPECT_EQ(Parent->NodeCount(), 2);
}

TEST_F(DomCharacterData, SplittingWithoutParentRaisesAndChangesNothing) {
  TOwned<TLxDOMText> Text(MakeStored<TLxDOMText>(u"a&amp;b"));
  const Int64 Before = Alive();
  test::ExpectRaises<ELxDomException>([&] { Text->SplitText(1); },
                                      u"A text node can't be split without a parent node.");
  EXPECT_EQ(Text->GetStoredValue(), u"a&amp;b");
  EXPECT_EQ(Alive(), Before);
}

TEST_F(DomCharacterData, ClonesKeepTheStoredFormAndAProcessingInstructionItsTargetOnly) {
  TOwned<TLxDOMNode> Root(test::MakeNode(u"root"));
  Root->AppendChild(MakeStored<TLxDOMText>(u"&amp;lt; &#65;"));
  Root->AppendChild(MakeStored<TLxDOMComment>(u"a -- &amp;"));
  Root->AppendChild(MakeStored<TLxDOMCDATA>(u"<&amp;>"));
  auto* PI = New<TLxDOMProcessingInstruction>();
  PI->SetQualifiedName(u"p:target");
  PI->SetData(u"data");
  Root->AppendChild(PI);
  TOwned<TLxDOMNode> Clone(Root->CloneNode(true));
  ASSERT_EQ(Clone->NodeCount(), 4);
  for (Integer I = 0; I < 3; ++I) {
    auto* Source = static_cast<TLxDOMCharacterData*>(Root->ChildNodes()->GetItem(I));
    auto* Copied = static_cast<TLxDOMCharacterData*>(Clone->ChildNodes()->GetItem(I));
    EXPECT_EQ(Copied->ClassType(), Source->ClassType());
    EXPECT_EQ(Copied->GetStoredValue(), Source->GetStoredValue());
    EXPECT_EQ(Copied->GetNodeName(), Source->GetNodeName());
  }
  auto* PIClone = static_cast<TLxDOMProcessingInstruction*>(Clone->ChildNodes()->GetItem(3));
  EXPECT_EQ(PIClone->ClassType(), TLxDOMProcessingInstruction::StaticClass());
  EXPECT_EQ(PIClone->GetTarget(), u"p:target");
  EXPECT_EQ(PIClone->GetData(), u"");
  TOwned<TLxDOMNode> Single(Root->ChildNodes()->First()->CloneNode(false));
  EXPECT_EQ(static_cast<TLxDOMText*>(Single.get())->GetStoredValue(), u"&amp;lt; &#65;");
  EXPECT_EQ(Single->GetNodeValue(), u"&lt; A");
  EXPECT_EQ(Single->ParentNode(), nullptr);
}

TEST_F(DomCharacterData, ProcessingInstructionKeepsItsDataAsItIsAndHasNoValue) {
  TOwned<TLxDOMProcessingInstruction> PI(New<TLxDOMProcessingInstruction>());
  PI->SetQualifiedName(u"xml-stylesheet");
  PI->SetData(u"href=\"a.css\" &amp; <");
  EXPECT_EQ(PI->GetTarget(), u"xml-stylesheet");
  EXPECT_EQ(PI->GetNodeName(), u"xml-stylesheet");
  EXPECT_EQ(PI->GetData(), u"href=\"a.css\" &amp; <");
  EXPECT_EQ(PI->GetNodeValue(), u"");
  test::ExpectRaises<ELxDomNotSupported>([&] { PI->SetNodeValue(u"v"); },
                                         u"The SetNodeValue is not supported by the TLxDomNode");
  EXPECT_EQ(PI->GetData(), u"href=\"a.css\" &amp; <");
}

TEST_F(DomCharacterData, EachKindHasItsNameKindAndInterfaces) {
  struct {
    TClass Class;
    std::u16string_view Name;
    TLxDOMNodeType Type;
    bool CharacterData, Text, Comment, CDATA, PI;
  } const Cases[] = {
      {TLxDOMCharacterData::StaticClass(), u"#text", ntText, true, false, false, false, false},
      {TLxDOMText::StaticClass(), u"#text", ntText, true, true, false, false, false},
      {TLxDOMComment::StaticClass(), u"#comment", ntComment, true, false, true, false, false},
      {TLxDOMCDATA::StaticClass(), u"#cdata-section", ntCDATA, true, true, false, true, false},
      {TLxDOMProcessingInstruction::StaticClass(), u"", ntProcessingInstruction, false, false,
       false, false, true},
  };
  for (const auto& Case : Cases) {
    SCOPED_TRACE(Case.Class->Name);
    // Owned by the interface from here on.
    IPtr<ILxDOMNode> Node =
        DOMInterface<ILxDOMNode>(static_cast<TLxDOMNode*>(Case.Class->CreateDefault()));
    EXPECT_EQ(Node->GetQualifiedName(), Case.Name);
    EXPECT_EQ(Node->GetNodeType(), Case.Type);
    EXPECT_EQ(Node->GetNodeValue(), u"");
    EXPECT_EQ(bool(IPtr<ILxDOMCharacterData>::From(Node)), Case.CharacterData);
    EXPECT_EQ(bool(IPtr<ILxDOMText>::From(Node)), Case.Text);
    EXPECT_EQ(bool(IPtr<ILxDOMComment>::From(Node)), Case.Comment);
    EXPECT_EQ(bool(IPtr<ILxDOMCDATA>::From(Node)), Case.CDATA);
    EXPECT_EQ(bool(IPtr<ILxDOMProcessingInstruction>::From(Node)), Case.PI);
  }
}

TEST_F(DomCharacterData, InterfacesEditSplitAndReachTheData) {
  IPtr<ILxDOMNode> Root = DOMInterface<ILxDOMNode>(test::MakeNode(u"root"));
  TLxDOMNode* RootNode = TLxDOMObjectImpl::Node(Root.Get());
  IPtr<ILxDOMCDATA> CDATA =
      DOMInterface<ILxDOMCDATA>(RootNode->AppendChild(MakeStored<TLxDOMCDATA>(u"<a>b")));
  ASSERT_TRUE(CDATA);
  // A CDATA section splits through the text interface it extends; the rest is plain text.
  IPtr<ILxDOMText> AsText = CDATA;
  IPtr<ILxDOMText> Rest = AsText->SplitTxt(3);
  ASSERT_TRUE(Rest);
  EXPECT_EQ(CDATA->GetNodeValue(), u"<a>");
  EXPECT_EQ(Rest->GetNodeValue(), u"b");
  EXPECT_FALSE(IPtr<ILxDOMCDATA>::From(Rest));
  EXPECT_EQ(Rest->ParentNode().Get(), Root.Get());
  EXPECT_EQ(Rest->PreviousSibling().Get(), static_cast<ILxDOMNode*>(CDATA.Get()));
  Rest->InsertStr(1, u"&");
  Rest->ReplaceStr(2, 1, u"<c");
  EXPECT_EQ(Rest->Substring(1, 10), u"&<c");
  Rest->DeleteStr(3, 1);
  Rest->AppendStr(u"'");
  EXPECT_EQ(static_cast<TLxDOMText*>(TLxDOMObjectImpl::Node(Rest.Get()))->GetStoredValue(),
            u"&amp;&lt;&apos;");

  IPtr<ILxDOMComment> Comment =
      DOMInterface<ILxDOMComment>(RootNode->AppendChild(New<TLxDOMComment>()));
  Comment->SetNodeValue(u"a-");
  Comment->AppendStr(u"-&amp;");
  EXPECT_EQ(Comment->GetNodeValue(), u"a--&amp;");

  IPtr<ILxDOMProcessingInstruction> PI = DOMInterface<ILxDOMProcessingInstruction>(
      RootNode->AppendChild(New<TLxDOMProcessingInstruction>()));
  PI->SetQualifiedName(u"target");
  PI->SetData(u"x <y>");
  EXPECT_EQ(PI->GetData(), u"x <y>");
  EXPECT_EQ(PI->GetQualifiedName(), u"target");
  EXPECT_EQ(Root->NodeCount(), 4);

  IPtr<ILxDOMText> Loose = DOMInterface<ILxDOMText>(New<TLxDOMText>());
  test::ExpectRaises<ELxDomException>([&] { Loose->SplitTxt(0); },
                                      u"A text node can't be split without a parent node.");
}

} // namespace
} // namespace lorvane
