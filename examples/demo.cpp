// Scans markup with the text cursor: skip to a delimiter, take the selected text.
#include <lorvane/uLxCore.h>

#include <iostream>

using namespace lorvane;

int main() {
  const UnicodeString Text = u"<greeting lang=\"fr\">Bonjour, \u00e9t\u00e9 !</greeting>";
  TOwned<TLxTextParser> Cursor(New<TLxTextParser>(Text.data(), Text.size() * 2, 1200));
  while (!Cursor->_GetEOF()) {
    Cursor->SkipWhile(spNotEqual, u'<');
    if (Cursor->_GetEOF())
      break;
    Cursor->NextChar();
    Cursor->SetMark(tpMark1);
    Cursor->SkipSet(spNotInSet, TLxCharSet{' ', '>'});
    const UnicodeString Name = Cursor->Selected(tpMark1, tpCurrent, true);
    std::cout << "tag " << StringToUTF8(Name) << " at column " << Cursor->GetColNr() << "\n";
  }
  std::cout << "as windows-1252: " << TLxEncoding::ConvertW(u"\u00e9t\u00e9", 1252).size()
            << " bytes\n";
}
