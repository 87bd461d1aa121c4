// The driver's walk, seen through the XML serializer without namespaces (the bare shape) and
// through a recording format class: which members go out under which names, cycles,
// components, interfaces, helpers, arrays, the method-arguments form, and failures.
#include "serializer/SerializerTestSupport.h"
#include "support/TestHelpers.h"

#include "lorvane/core/LxStreams.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>

using namespace lorvane;
using namespace lorvane::test;

namespace {

// --- visibility, hints, names, cycles ------------------------------------------------------------
class TWalkNode : public TPersistent {
  LX_CLASS(TWalkNode, TPersistent)
  TWalkNode() = default;
  Integer Id = 0;
  UnicodeString Secret = u"s", Alias = u"a", Label = u"l", Hidden = u"h", Skipped = u"k";
  UnicodeString Private = u"v";
  Integer Shadow = 5, PubField = 6, PrivField = 7, ProtField = 8, NoName = 9, DoNot = 10;
  TWalkNode* Next = nullptr;
  TWalkNode* Link = nullptr;
  void SetSink(Integer) {}

protected:
  ~TWalkNode() override = default;
};

void DescribeWalkNode() {
  static const bool Described = [] {
    using N = TWalkNode;
    LxDescribeClass<N>(u"Test.TWalkNode")
        .Property(u"Id", &N::Id)
        .Property(u"Secret", &N::Secret, mvPublic)
        .Property(u"Alias", &N::Alias, mvPublic)
        .Hint(shoName, u"Nick")
        .Property(u"Label", &N::Label)
        .Hint(shoName, u"x")
        .Property(u"Hidden", &N::Hidden)
        .Hint(shoName, u"")
        .Property(u"Skipped", &N::Skipped)
        .Hint(shoDoNotSerialize)
        .Property(u"Sink", static_cast<Integer (N::*)() const>(nullptr), &N::SetSink)
        .Property(u"Private", &N::Private, mvPrivate)
        .Hint(shoName, u"p")
        .Property(u"Shadow", &N::Shadow, mvPublic)
        .Property(u"Next", &N::Next)
        .Field(u"shadow", &N::Shadow)
        .Field(u"PubField", &N::PubField)
        .Hint(shoName, u"renamed")
        .Field(u"PrivField", &N::PrivField, mvPrivate)
        .Hint(shoName, u"y")
        .Field(u"ProtField", &N::ProtField, mvProtected)
        .Field(u"NoName", &N::NoName)
        .Hint(shoName, u"")
        .Field(u"DoNot", &N::DoNot)
        .Hint(shoDoNotSerialize)
        .Field(u"Link", &N::Link);
    return true;
  }();
  (void)Described;
}

TOwned<TWalkNode> MakeNode(Integer AId) {
  DescribeWalkNode();
  TOwned<TWalkNode> Node(New<TWalkNode>());
  Node->Id = AId;
  return Node;
}

/// The members that a TWalkNode writes around its links, with Id AId.
std::string NodeHead(int AId) {
  return "<Id>" + std::to_string(AId) + "</Id><Nick>a</Nick><x>l</x>";
}

TEST(SerializerWalk, VisibilityAndHintsChooseMembersAndNames) {
  TOwned<TWalkNode> Node = MakeNode(1);
  // Streamable and named public properties go out, then public fields under their own names; a
  // property hides the field of its name even though the property itself is skipped.
  EXPECT_EQ(BareXmlOf(TValue::From(Node.get())),
            "<object>" + NodeHead(1) + "<Next/><PubField>6</PubField><Link/></object>");
  // The renamed members carry their types like any other.
  const std::string Typed = XmlOf(TValue::From(Node.get()));
  EXPECT_NE(Typed.find("<Nick xsi:type=\"xsd:string\">a</Nick>"), std::string::npos) << Typed;
  EXPECT_NE(Typed.find("<Next xsi:type=\"xsd:TWalkNode\" xsi:nil=\"true\"/>"), std::string::npos);
}

TEST(SerializerWalk, CyclesThroughPropertiesAndFieldsAreLeftOut) {
  TOwned<TWalkNode> First = MakeNode(1), Second = MakeNode(2), Shared = MakeNode(3);
  First->Next = First.get();
  First->Link = First.get();
  EXPECT_EQ(BareXmlOf(TValue::From(First.get())),
            "<object>" + NodeHead(1) + "<PubField>6</PubField></object>");
  // A cycle over two objects ends where the walk meets an object it is inside of.
  First->Next = Second.get();
  Second->Next = First.get();
  Second->Link = Second.get();
  First->Link = nullptr;
  EXPECT_EQ(BareXmlOf(TValue::From(First.get())),
            "<object>" + NodeHead(1) + "<Next>" + NodeHead(2) +
                "<PubField>6</PubField></Next><PubField>6</PubField><Link/></object>");
  // Reached twice along different branches without a cycle: written twice.
  First->Next = Shared.get();
  First->Link = Shared.get();
  const std::string SharedText = NodeHead(3) + "<Next/><PubField>6</PubField><Link/>";
  EXPECT_EQ(BareXmlOf(TValue::From(First.get())), "<object>" + NodeHead(1) + "<Next>" + SharedText +
                                                      "</Next><PubField>6</PubField>" + "<Link>" +
                                                      SharedText + "</Link></object>");
  // With "excludechildren" class members are skipped altogether.
  EXPECT_EQ(BareXmlOf(TValue::From(First.get()), {{u"excludechildren", u"true"}}),
            "<object>" + NodeHead(1) + "<PubField>6</PubField></object>");
}

TEST(SerializerWalk, EveryMemberIsNamedBeforeItsValueAndSimpleOnesGetTheirAnnotations) {
  TOwned<TWalkNode> Node = MakeNode(4);
  // Parent kind 28 is a class; 15 the plain string, 7 Integer.
  EXPECT_EQ(CallsFor(TValue::From(Node.get())),
            "S(:TWalkNode)N(Id:f28>7)V(Id:Integer=4{0})N(Nick:f28>15)V(Nick:string=a{1})"
            "N(x:f28>15)V(x:string=l{1})N(Next:f28>28)V(Next:TWalkNode=nil)"
            "N(PubField:f28>7)V(PubField:Integer=6{1})N(Link:f28>28)V(Link:TWalkNode=nil)"
            "E()");
}

// --- components ----------------------------------------------------------------------------------
class TWalkPart : public TComponent {
  LX_CLASS(TWalkPart, TComponent)
  explicit TWalkPart(TComponent* AOwner) : TComponent(AOwner) {}
  Integer Size = 1;

protected:
  ~TWalkPart() override = default;
};

class TWalkBox : public TComponent {
  LX_CLASS(TWalkBox, TComponent)
  explicit TWalkBox(TComponent* AOwner) : TComponent(AOwner) {}
  TWalkPart* Own = nullptr;
  TWalkPart* Other = nullptr;
  TWalkPart* Orphan = nullptr;
  TWalkPart* None = nullptr;

protected:
  ~TWalkBox() override = default;
};

TEST(SerializerWalk, ComponentsOwnedElsewhereAreReferencedByName) {
  static const bool Described = [] {
    LxDescribeClass<TWalkPart>(u"Test.TWalkPart").Property(u"Size", &TWalkPart::Size);
    LxDescribeClass<TWalkBox>(u"Test.TWalkBox")
        .Property(u"Own", &TWalkBox::Own)
        .Property(u"Other", &TWalkBox::Other)
        .Property(u"Orphan", &TWalkBox::Orphan)
        .Property(u"None", &TWalkBox::None);
    return true;
  }();
  (void)Described;
  TOwned<TWalkBox> Box(New<TWalkBox>(nullptr));
  TOwned<TWalkBox> Shelf(New<TWalkBox>(nullptr));
  Box->Own = New<TWalkPart>(Box.get());
  Box->Own->Size = 2;
  Box->Other = New<TWalkPart>(Shelf.get());
  Box->Other->SetName(u"Elsewhere");
  TOwned<TWalkPart> Orphan(New<TWalkPart>(nullptr));
  Box->Orphan = Orphan.get();
  EXPECT_EQ(BareXmlOf(TValue::From(Box.get())),
            "<object><Own><Size>2</Size></Own><Other>Elsewhere</Other>"
            "<Orphan><Size>1</Size></Orphan><None/></object>");
  const std::string Typed = XmlOf(TValue::From(Box.get()));
  EXPECT_NE(Typed.find("<Other xsi:type=\"xsd:string\">Elsewhere</Other>"), std::string::npos)
      << Typed;
  EXPECT_NE(Typed.find("<None xsi:type=\"xsd:TWalkPart\" xsi:nil=\"true\"/>"), std::string::npos);
}

// --- values of special kinds ---------------------------------------------------------------------
/// Offers its own text in XML.
class TOffering : public TLxObject, public virtual ILxSerializable {
  LX_CLASS(TOffering, TLxObject)
  TOffering() = default;
  bool CanSerialize(TLxDataSerializationFormatType AFormat) override { return AFormat == ldsXML; }
  TLxSerializedData Serialize(TLxDataSerializationFormatType, TStrings* AParams) override {
    return "<raw>" + StringToUTF8(AParams ? AParams->GetValues(u"excludenamespaces") : u"?") +
           "</raw>";
  }
  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override {
    return AnswerInterfaces<ILxSerializable>(this, AIID, AObj,
                                             [&] { return TLxObject::QueryInterface(AIID, AObj); });
  }

protected:
  ~TOffering() override = default;
};

/// An interface that leads neither to offered text nor to an object.
class TPlainInterface final : public IInterface {
public:
  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override {
    if (AIID == IInterface::IID) {
      *AObj = static_cast<IInterface*>(this);
      return S_OK;
    }
    *AObj = nullptr;
    return E_NOINTERFACE;
  }
  Integer _AddRef() override { return 1; }
  Integer _Release() override { return 1; }
};

class TWalkLeaf : public TLxObject {
  LX_CLASS(TWalkLeaf, TLxObject)
  TWalkLeaf() = default;
  Integer Depth = 3;

protected:
  ~TWalkLeaf() override = default;
};

struct TWalkWrap {
  IPtr<ILxSerializable> Offer;
};

class TWalkKinds : public TPersistent {
  LX_CLASS(TWalkKinds, TPersistent)
  TWalkKinds() = default;
  TValue Any;
  TValue AnyField;
  void* Raw = nullptr;
  void* RawProperty = nullptr;
  TClass Kind = nullptr;
  TClass KindProperty = nullptr;
  IPtr<ILxSerializable> Offer;
  IPtr<IInterface> Object;
  IPtr<IInterface> Plain;
  TWalkWrap Wrap;
  TWalkKinds* Inner = nullptr;

protected:
  ~TWalkKinds() override { lorvane::Free(Inner); }
};

void DescribeWalkKinds() {
  static const bool Described = [] {
    LxDescribeClass<TWalkLeaf>(u"Test.TWalkLeaf").Property(u"Depth", &TWalkLeaf::Depth);
    LxDescribeRecord<TWalkWrap>(u"Test.TWalkWrap").Field(u"Offer", &TWalkWrap::Offer);
    using K = TWalkKinds;
    LxDescribeClass<K>(u"Test.TWalkKinds")
        .Property(u"Any", &K::Any)
        .Property(u"RawProperty", &K::RawProperty)
        .Property(u"KindProperty", &K::KindProperty)
        .Property(u"Offer", &K::Offer)
        .Property(u"Object", &K::Object)
        .Property(u"Plain", &K::Plain)
        .Property(u"Wrap", &K::Wrap)
        .Property(u"Inner", &K::Inner)
        .Field(u"AnyField", &K::AnyField)
        .Field(u"Raw", &K::Raw)
        .Field(u"Kind", &K::Kind);
    return true;
  }();
  (void)Described;
}

TEST(SerializerWalk, ValuesPointersClassReferencesAndInterfaces) {
  DescribeWalkKinds();
  TOwned<TWalkKinds> Kinds(New<TWalkKinds>());
  Kinds->Any = TValue::From(Integer(5));
  Kinds->AnyField = TValue::From(UnicodeString(u"t"));
  Kinds->Raw = reinterpret_cast<void*>(std::intptr_t(0x1234));
  Kinds->RawProperty = Kinds->Raw;
  Kinds->Kind = TWalkLeaf::StaticClass();
  Kinds->KindProperty = Kinds->Kind;
  Kinds->Offer = IPtr<ILxSerializable>::From(static_cast<TLxObject*>(New<TOffering>()));
  Kinds->Object = IPtr<IInterface>(static_cast<ILxObject*>(New<TWalkLeaf>()));
  Kinds->Wrap.Offer = Kinds->Offer;
  // TValue members go out as what they hold (an empty one not at all); pointers as numbers and
  // class references as names, but only from fields: properties of those kinds are skipped. An
  // interface offers its own text, or leads to its object. The offered text gets the options
  // of the serializer that meets the interface, not those it inherits: inside the record, none.
  const std::string Expected =
      "<Any>5</Any><Offer><raw>true</raw></Offer><Object><Depth>3</Depth></Object><Plain/>"
      "<Wrap><Offer><raw></raw></Offer></Wrap><Inner/>"
      "<AnyField>t</AnyField><Raw>4660</Raw><Kind>TWalkLeaf</Kind>";
  EXPECT_EQ(BareXmlOf(TValue::From(Kinds.get())), "<object>" + Expected + "</object>");
  const std::string Typed = XmlOf(TValue::From(Kinds.get()));
  for (const char* Part :
       {"<Any xsi:type=\"xsd:int\">5</Any>", "<AnyField xsi:type=\"xsd:string\">t</AnyField>",
        "<Raw xsi:type=\"xsd:long\">4660</Raw>", "<Kind xsi:type=\"xsd:string\">TWalkLeaf</Kind>",
        "<Offer xsi:type=\"xsd:ILxSerializable\"><raw>false</raw></Offer>"})
    EXPECT_NE(Typed.find(Part), std::string::npos) << Part << " in " << Typed;
  Kinds->Any = TValue();
  EXPECT_EQ(BareXmlOf(TValue::From(Kinds.get())).substr(0, 15), "<object><Offer>");

  // Without its root element the offered text stands bare inside a class, but keeps its
  // element inside a record.
  EXPECT_EQ(BareXmlOf(TValue::From(Kinds.get()), {{u"excluderoot", u"true"}}),
            "<raw>true</raw><Object><Depth>3</Depth></Object><Plain/>"
            "<Wrap><Offer><raw></raw></Offer></Wrap><Inner/>"
            "<AnyField>t</AnyField><Raw>4660</Raw><Kind>TWalkLeaf</Kind>");
}

TEST(SerializerWalk, AnInterfaceThatNoWriterKnowsFailsWithItsPath) {
  DescribeWalkKinds();
  TPlainInterface Plain;
  TOwned<TWalkKinds> Kinds(New<TWalkKinds>());
  Kinds->Inner = New<TWalkKinds>();
  Kinds->Inner->Plain = IPtr<IInterface>(&Plain);
  TLiveCount Live;
  ExpectRaises<ELxSerializeException>(
      [&] { LxSerialize(ldsXML, TValue::From(Kinds.get())); },
      u"Serialization failure at \"Inner\"\r\nThe field \"Plain\" of type \"lorvane.IInterface\" "
      u"cannot be serialized!");
  Live.ExpectMadeSince(0, "the serializers of a failed run are freed");
  // With "excludechildren" interfaces are not descended into.
  EXPECT_EQ(BareXmlOf(TValue::From(Kinds.get()), {{u"excludechildren", u"true"}}),
            "<object><Raw>0</Raw><Kind></Kind></object>");
  Kinds->Inner->Plain = nullptr;
}

// --- helpers and objects that steer their own walk -----------------------------------------------
/// Writes "[name]" in place of the member.
class TBracketHelper : public TLxSerializerHelper {
  LX_CLASS(TBracketHelper, TLxSerializerHelper)
  TBracketHelper() = default;
  void Serialize(TLxSerializer* ASerializer, std::u16string_view AName, const TLxTypeInfo*,
                 const TValue&, bool& Handled) override {
    ASerializer->Write(u"[" + UnicodeString(AName) + u"]");
    Handled = true;
  }

protected:
  ~TBracketHelper() override = default;
};

/// Writes "#" and leaves Handled as it found it.
class TMarkHelper : public TLxSerializerHelper {
  LX_CLASS(TMarkHelper, TLxSerializerHelper)
  TMarkHelper() = default;
  void Serialize(TLxSerializer* ASerializer, std::u16string_view, const TLxTypeInfo*, const TValue&,
                 bool&) override {
    ASerializer->Write(u"#");
  }

protected:
  ~TMarkHelper() override = default;
};

class TStarred : public TPersistent {
  LX_CLASS(TStarred, TPersistent)
  TStarred() = default;
  Integer N = 1;

protected:
  ~TStarred() override = default;
};

class THelped : public TPersistent {
  LX_CLASS(THelped, TPersistent)
  THelped() = default;
  Integer ByHint = 1;
  Integer Marked = 2;
  TStarred* Star = nullptr;
  TStarred* NoStar = nullptr;
  THelped* Inner = nullptr;

protected:
  ~THelped() override { lorvane::Free(Inner); }
};

void DescribeHelped() {
  static const bool Described = [] {
    LxDescribeClass<TBracketHelper>(u"Test.TBracketHelper");
    LxDescribeClass<TMarkHelper>(u"Test.TMarkHelper");
    LxDescribeClass<TStarred>(u"Test.TStarred").Property(u"N", &TStarred::N);
    LxDescribeClass<THelped>(u"Test.THelped")
        .Property(u"ByHint", &THelped::ByHint)
        .Hint(shoSerializerHelper, u"Test.TBracketHelper")
        .Property(u"Marked", &THelped::Marked)
        .Hint(shoSerializerHelper, u"Test.TMarkHelper")
        .Property(u"Star", &THelped::Star)
        .Property(u"NoStar", &THelped::NoStar)
        .Property(u"Inner", &THelped::Inner);
    LxRegisterSerializerHelper(TStarred::StaticClass(), TBracketHelper::StaticClass(), nullptr);
    return true;
  }();
  (void)Described;
}

TEST(SerializerWalk, HelpersReplaceMembersAndTheRoot) {
  DescribeHelped();
  TOwned<THelped> Helped(New<THelped>());
  TOwned<TStarred> Star(New<TStarred>());
  Helped->Star = Star.get();
  Helped->Inner = New<THelped>();
  TLiveCount Live;
  // A hint's helper or the helper of the member's class (of the declared class for nil)
  // replaces the member. A helper that leaves Handled alone replaces it below the root only.
  EXPECT_EQ(BareXmlOf(TValue::From(Helped.get())),
            "<object>[ByHint]#<Marked>2</Marked>[Star][NoStar]"
            "<Inner>[ByHint]#[Star][NoStar]<Inner/></Inner></object>");
  // At the root the helper of the object's class replaces the walk inside the root element.
  EXPECT_EQ(BareXmlOf(TValue::From(Star.get())), "<object>[]</object>");
  Live.ExpectMadeSince(0, "each helper is freed after its member");
}

/// Changes an option of the serializer it runs in, half-way through its members.
template <int Option> class TOptionSwitch : public TLxSerializerHelper {
  LX_CLASS(TOptionSwitch, TLxSerializerHelper)
  TOptionSwitch() = default;
  void Serialize(TLxSerializer* ASerializer, std::u16string_view, const TLxTypeInfo*, const TValue&,
                 bool& Handled) override {
    if (Option == 0)
      ASerializer->SetParam(u"xsi-prefix", u"q");
    else
      ASerializer->SetParam(u"excludechildren", u"true");
    Handled = true;
  }

protected:
  ~TOptionSwitch() override = default;
};

class TSwitched : public TPersistent {
  LX_CLASS(TSwitched, TPersistent)
  TSwitched() = default;
  TWalkLeaf* Before = nullptr;
  Integer Switch = 0;
  TWalkLeaf* After = nullptr;
  Integer ExcludeSwitch = 0;
  TSwitched* Last = nullptr;

protected:
  ~TSwitched() override {
    lorvane::Free(Last);
    lorvane::Free(Before);
    lorvane::Free(After);
  }
};

// Children take options over from their parents; one changed during the walk reaches the
// members written after the change, as it would if each of them read it afresh.
TEST(SerializerWalk, AnOptionChangedDuringTheWalkReachesWhatIsWrittenAfter) {
  static const bool Described = [] {
    DescribeWalkKinds();
    LxDescribeClass<TOptionSwitch<0>>(u"Test.TPrefixSwitch");
    LxDescribeClass<TOptionSwitch<1>>(u"Test.TExcludeSwitch");
    LxDescribeClass<TSwitched>(u"Test.TSwitched")
        .Property(u"Before", &TSwitched::Before)
        .Property(u"Switch", &TSwitched::Switch)
        .Hint(shoSerializerHelper, u"Test.TPrefixSwitch")
        .Property(u"Last", &TSwitched::Last)
        .Property(u"ExcludeSwitch", &TSwitched::ExcludeSwitch)
        .Hint(shoSerializerHelper, u"Test.TExcludeSwitch")
        .Property(u"After", &TSwitched::After);
    return true;
  }();
  (void)Described;
  TOwned<TSwitched> Root(New<TSwitched>());
  Root->Before = New<TWalkLeaf>();
  Root->After = New<TWalkLeaf>();
  Root->Last = New<TSwitched>();
  // The prefix changes for the child made after it (the root's own elements keep theirs), and
  // the object member after "excludechildren" goes out as a reference, here nil.
  const std::string Xml = XmlOf(TValue::From(Root.get()));
  EXPECT_NE(Xml.find("<Before xsi:type=\"xsd:TWalkLeaf\"><Depth xsi:type=\"xsd:int\">3</Depth>"
                     "</Before><Last q:type=\"xsd:TSwitched\"><Before q:type=\"xsd:TWalkLeaf\" "
                     "q:nil=\"true\"/>"),
            std::string::npos)
      << Xml;
  EXPECT_NE(Xml.find("</Last><After xsi:type=\"xsd:TWalkLeaf\" xsi:nil=\"true\"/></object>"),
            std::string::npos)
      << Xml;
}

/// Refuses its member "Refused" and can replace its whole walk.
class TSteering : public TLxSerializableObject {
  LX_CLASS(TSteering, TLxSerializableObject)
  TSteering() { SetAutoDestroy(false); }
  TWalkLeaf* Refused = nullptr;
  TWalkLeaf* Allowed = nullptr;
  bool Replace = false;
  UnicodeString Seen;
  bool CanSerializeChild(TLxSerializer* ASerializer, TObject* AObject, TClass AClass,
                         std::u16string_view AName) override {
    Seen += UnicodeString(AName) + (AObject ? u"+" : u"-") + ClassNameOf(AClass) + u";";
    return TLxSerializableObject::CanSerializeChild(ASerializer, AObject, AClass, AName) &&
           AName != u"Refused";
  }
  void BeforeSerialize(TLxSerializer* ASerializer, bool& Handled) override {
    TLxSerializableObject::BeforeSerialize(ASerializer, Handled);
    if (Replace) {
      ASerializer->Write(u"own");
      Handled = true;
    }
  }

protected:
  ~TSteering() override = default;
};

TEST(SerializerWalk, AnObjectSteersItsOwnWalk) {
  static const bool Described = [] {
    DescribeWalkKinds();
    LxDescribeClass<TSteering>(u"Test.TSteering")
        .Property(u"Refused", &TSteering::Refused)
        .Property(u"Allowed", &TSteering::Allowed);
    return true;
  }();
  (void)Described;
  TOwned<TSteering> Steering(New<TSteering>());
  TOwned<TWalkLeaf> Leaf(New<TWalkLeaf>());
  Leaf->SetAutoDestroy(false);
  Steering->Refused = Leaf.get();
  EXPECT_EQ(BareXmlOf(TValue::From(Steering.get())), "<object><Allowed/></object>");
  EXPECT_EQ(Steering->Seen, u"Refused+TWalkLeaf;Allowed-TWalkLeaf;");
  Steering->Replace = true;
  EXPECT_EQ(BareXmlOf(TValue::From(Steering.get())), "<object>own</object>");
  EXPECT_FALSE(Steering->GetSerializing());
}

// --- arrays --------------------------------------------------------------------------------------
struct TWalkPoint {
  Integer X = 0;
};

class TWalkShapes : public TPersistent {
  LX_CLASS(TWalkShapes, TPersistent)
  TWalkShapes() = default;
  std::vector<Integer> Numbers;
  std::array<SmallInt, 2> Fixed{{1, 2}};
  std::vector<TWalkPoint> Points;
  TWalkPoint Origin;
  std::vector<TWalkLeaf*> Leaves;
  std::vector<std::vector<Integer>> Grid;

protected:
  ~TWalkShapes() override {
    for (TWalkLeaf* Leaf : Leaves)
      lorvane::Free(Leaf);
  }
};

void DescribeWalkShapes() {
  static const bool Described = [] {
    DescribeWalkKinds();
    LxDescribeRecord<TWalkPoint>(u"Test.TWalkPoint").Field(u"X", &TWalkPoint::X);
    LxDescribeClass<TWalkShapes>(u"Test.TWalkShapes")
        .Property(u"Numbers", &TWalkShapes::Numbers)
        .Property(u"Fixed", &TWalkShapes::Fixed)
        .Property(u"Points", &TWalkShapes::Points)
        .Property(u"Origin", &TWalkShapes::Origin)
        .Property(u"Leaves", &TWalkShapes::Leaves)
        .Field(u"Grid", &TWalkShapes::Grid);
    return true;
  }();
  (void)Described;
}

TEST(SerializerWalk, ArraysOfSimpleValuesRecordsAndObjects) {
  DescribeWalkShapes();
  TOwned<TWalkShapes> Shapes(New<TWalkShapes>());
  Shapes->Numbers = {1, 2};
  Shapes->Points = {{3}, {4}};
  Shapes->Origin = {5};
  Shapes->Leaves = {New<TWalkLeaf>(), nullptr};
  EXPECT_EQ(BareXmlOf(TValue::From(Shapes.get())),
            "<object><Numbers><int>1</int><int>2</int></Numbers>"
            "<Fixed><short>1</short><short>2</short></Fixed>"
            "<Points><TWalkPoint><X>3</X></TWalkPoint><TWalkPoint><X>4</X></TWalkPoint></Points>"
            "<Origin><X>5</X></Origin>"
            "<Leaves><TWalkLeaf><Depth>3</Depth></TWalkLeaf><TWalkLeaf/></Leaves>"
            "<Grid></Grid></object>");
  // "excludechildren": records are skipped as members and empty as elements; objects in arrays
  // are written as nil.
  EXPECT_EQ(BareXmlOf(TValue::From(Shapes.get()), {{u"excludechildren", u"true"}}),
            "<object><Numbers><int>1</int><int>2</int></Numbers>"
            "<Fixed><short>1</short><short>2</short></Fixed>"
            "<Points><TWalkPoint/><TWalkPoint/></Points>"
            "<Leaves><TWalkLeaf/><TWalkLeaf/></Leaves><Grid></Grid></object>");
  // Elements carry their index and no annotations.
  EXPECT_NE(CallsFor(TValue::From(Shapes.get()))
                .find("S(Numbers:TArray<Integer>)V(int:Integer=1[0])V(int:Integer=2[1])E(Numbers)"),
            std::string::npos)
      << CallsFor(TValue::From(Shapes.get()));
}

class TTreeNode : public TPersistent {
  LX_CLASS(TTreeNode, TPersistent)
  TTreeNode() = default;
  Integer Id = 0;
  std::vector<TTreeNode*> Children;

protected:
  ~TTreeNode() override = default;
};

TEST(SerializerWalk, AnObjectListedInAnArrayBelowItselfIsLeftOut) {
  static const bool Described = [] {
    LxDescribeClass<TTreeNode>(u"Test.TTreeNode")
        .Property(u"Id", &TTreeNode::Id)
        .Property(u"Children", &TTreeNode::Children);
    return true;
  }();
  (void)Described;
  TOwned<TTreeNode> Root(New<TTreeNode>());
  TOwned<TTreeNode> Child(New<TTreeNode>());
  Root->Id = 1;
  Child->Id = 2;
  // The root in its own list, and again in its child's: each time it is being written already.
  Root->Children = {Root.get(), Child.get()};
  Child->Children = {Root.get()};
  EXPECT_EQ(BareXmlOf(TValue::From(Root.get())),
            "<object><Id>1</Id><Children><TTreeNode><Id>2</Id><Children></Children>"
            "</TTreeNode></Children></object>");
}

TEST(SerializerWalk, RootArrays) {
  DescribeWalkShapes();
  std::vector<TWalkPoint> Points{{1}, {2}};
  EXPECT_EQ(BareXmlOf(TValue::From(Points)),
            "<array><TWalkPoint><X>1</X></TWalkPoint><TWalkPoint><X>2</X></TWalkPoint></array>");
  EXPECT_EQ(XmlOf(TValue::From(std::vector<Integer>{7}), {{u"xmlns", u"urn:t"}}),
            "<array xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
            "xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\" xsi:type=\"xsd:ArrayOfInt\" "
            "xmlns=\"urn:t\"><int xsi:type=\"xsd:int\">7</int></array>");
  // By instance and type there is no kept value to walk.
  TOwned<TLxStringStream> Stream(New<TLxStringStream>(Word(65001), Int64(0)));
  TLiveCount Live;
  ExpectRaises<ELxSerializeException>(
      [&] {
        TOwned<TLxSerializer> Serializer(
            LxCreateSerializer(ldsXML, &Points, TypeHandle<std::vector<TWalkPoint>>()));
        Serializer->SetParam(u"excludenamespaces", u"true");
        Serializer->Serialize(Stream.get());
      },
      u"Serialization failure at \"\"\r\nThe type of the value does not match the type of the "
      u"instanceinfo!");
  Live.ExpectMadeSince(0);
  // What was written before the failure stays in the stream.
  EXPECT_EQ(std::string(Stream->GetAString()), "<array>");
}

TEST(SerializerWalk, ArraysOfArraysFailAndLeaveNothingAlive) {
  DescribeWalkShapes();
  TOwned<TWalkShapes> Shapes(New<TWalkShapes>());
  Shapes->Leaves = {New<TWalkLeaf>()};
  Shapes->Grid = {{1}};
  TLiveCount Live;
  ExpectRaises<ELxSerializeException>(
      [&] { LxSerialize(ldsXML, TValue::From(Shapes.get())); },
      u"Serialization failure at \"Grid.ArrayOfInt\"\r\nArrays are only supported as a field or "
      u"property of another object/record!");
  std::vector<std::vector<Integer>> Grid{{1}};
  ExpectRaises<ELxSerializeException>(
      [&] { LxSerialize(ldsXML, TValue::From(Grid)); },
      u"Serialization failure at \"ArrayOfInt\"\r\nArrays are only supported as a field or "
      u"property of another object/record!");
  Live.ExpectMadeSince(0, "the serializers of a failed run are freed");
}

// --- the arguments of a call ---------------------------------------------------------------------
using TOnSaved = std::function<void(Integer, UnicodeString, TWalkLeaf*)>;

TEST(SerializerWalk, TheArgumentsOfACallAsOneConstruct) {
  static const bool Described = [] {
    DescribeWalkKinds();
    LxDescribeEvent<TOnSaved>(u"Test.TOnSaved", {u"ACount", u"AName", u"ALeaf"});
    return true;
  }();
  (void)Described;
  TRecordingSerializer::Register();
  TOwned<TWalkLeaf> Leaf(New<TWalkLeaf>());
  TOwned<TLxSerializer> Serializer(LxCreateSerializer(ldsFormat2, TValue()));
  TOwned<TLxStringStream> Stream(New<TLxStringStream>(Word(65001), Int64(0)));
  Serializer->Serialize(
      Stream.get(), TLxTypes::GetTypeInfo<TOnSaved>(), u"",
      {TValue::From(Integer(3)), TValue::From(UnicodeString(u"n")), TValue::From(Leaf.get())});
  EXPECT_EQ(StringToUTF8(static_cast<TRecordingSerializer*>(Serializer.get())->Calls()),
            "S(root:TOnSaved)N(ACount:f0>7)V(ACount:Integer=3)N(AName:f0>15)"
            "V(AName:string=n)N(ALeaf:f0>28)S(ALeaf:TWalkLeaf)N(Depth:f28>7)"
            "V(Depth:Integer=3{0})E(ALeaf)E(root)");
  ExpectRaises<Exception>(
      [&] {
        Serializer->Serialize(Stream.get(), TLxTypes::GetTypeInfo<TOnSaved>(), u"",
                              {TValue::From(Integer(3))});
      },
      u"Failed to trigger the event!\r\nThe paramatercount does not match the count of the "
      u"prototype.");
  // In XML the arguments stand side by side: an event type has no element of its own.
  TOwned<TLxSerializer> Xml(LxCreateSerializer(ldsXML, TValue()));
  Xml->SetParam(u"excludenamespaces", u"true");
  TOwned<TLxStringStream> XmlStream(New<TLxStringStream>(Word(65001), Int64(0)));
  Xml->Serialize(
      XmlStream.get(), TLxTypes::GetTypeInfo<TOnSaved>(), u"",
      {TValue::From(Integer(3)), TValue::From(UnicodeString(u"<n>")), TValue::From(Leaf.get())});
  EXPECT_EQ(std::string(XmlStream->GetAString()),
            "<ACount>3</ACount><AName>&lt;n&gt;</AName><ALeaf><Depth>3</Depth></ALeaf>");
}

} // namespace
