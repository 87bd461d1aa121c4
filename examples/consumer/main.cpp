// A program outside the project that finds the installed library with find_package. Making a
// document through the foundation's hook proves that the library's start-up came along.
#include <lorvane/uLxClasses.h>
#include <lorvane/uLxXMLDOM.h>

#include <iostream>

int main() {
  using namespace lorvane;
  const auto Document = IPtr<ILxDOMDocument>::From(CreateXMLDocument(u"<greeting>ok</greeting>"));
  if (!Document)
    return 1;
  std::cout << "consumer " << StringToUTF8(Document->GetRootNode()->GetText()) << "\n";
  return 0;
}
