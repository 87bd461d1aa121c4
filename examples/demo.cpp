// Reads XML with the event component: plain callbacks instead of a handler class.
#include <lorvane/uLxSAX.h>

#include <iostream>

using namespace lorvane;

int main() {
  TOwned<TLxSAXParser> Parser(New<TLxSAXParser>(nullptr));
  int Depth = 0;
  Parser->SetOnStartElement([&](TObject*, const LxXMLString&, const LxXMLString& ALocalName,
                                const LxXMLString&, ILxSAXAttributes* AAttributes) {
    std::cout << std::string(2 * Depth++, ' ') << StringToUTF8(ALocalName);
    for (PLxSAXXMAttribute A = AAttributes->FirstAttribute(); A; A = A->Next)
      std::cout << ' ' << StringToUTF8(A->QName) << '=' << StringToUTF8(A->Value);
    std::cout << '\n';
  });
  Parser->SetOnEndElement(
      [&](TObject*, const LxXMLString&, const LxXMLString&, const LxXMLString&) { --Depth; });
  Parser->SetOnCharacters([&](TObject*, const LxXMLString& AText) {
    std::cout << std::string(2 * Depth, ' ') << '"' << StringToUTF8(AText) << "\"\n";
  });
  Parser->SetOnFatalError([](ILxSAXLocator* ALocator, const LxXMLString&) {
    std::cout << "failed at line " << ALocator->GetLineNr() << ", column " << ALocator->GetColNr()
              << '\n';
  });
  Parser->Parse(LxXMLString(u"<greeting lang=\"fr\"><text>Bonjour, \u00e9t\u00e9 !</text>"
                            u"<to who=\"all\"/></greeting>"));
  try {
    Parser->Parse(LxXMLString(u"<list>\n  <item id=2/>\n</list>"));
  } catch (const ELxXMLParseError& E) {
    std::cout << "error code " << E.ErrorCode() << '\n';
  }
}
