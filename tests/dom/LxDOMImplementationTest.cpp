// The implementation object: features and the refused document types.
#include "dom/DomFixtures.h"

namespace lorvane {
namespace {

class DomImplementation : public test::LiveObjectsTest {};

TEST_F(DomImplementation, HasXmlOneAndTwoWithoutRegardToCase) {
  IPtr<IDOMImplementation> Impl(New<TLxDOMImplementation>());
  struct Case {
    const char16_t* Feature;
    const char16_t* Version;
    WordBool Expected;
  } Cases[] = {{u"XML", u"2.0", WordTrue},
               {u"xml", u"1.0", WordTrue},
               {u"xml", u"3.0", WordFalse},
               {u"xml", u"", WordFalse},
               {u"core", u"2.0", WordFalse}};
  for (const Case& C : Cases)
    EXPECT_EQ(Impl->hasFeature(C.Feature, C.Version), C.Expected) << StringToUTF8(C.Version);
}

TEST_F(DomImplementation, CreateDocumentTypeRaises) {
  IPtr<IDOMImplementation> Impl(New<TLxDOMImplementation>());
  IPtr<IDOMDocumentType> Result;
  test::ExpectRaises<ELxDomNotSupported>(
      [&] { Impl->createDocumentType(u"html", u"", u"", Result); }, u"Not implemented");
}

} // namespace
} // namespace lorvane
