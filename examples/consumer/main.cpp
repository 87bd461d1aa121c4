// A program outside the project that finds the installed library with find_package.
#include <lorvane/platform/SysUtils.h>

#include <iostream>

int main() {
  std::cout << "consumer " << lorvane::StringToUTF8(u"ok") << "\n";
  return 0;
}
