// The UTF-16 big-endian documents of the W3C conformance corpus against their twins in UTF-16
// little endian and UTF-8: the XML reader, reading each file behind its byte order mark, must
// give the same events (the declaration names its own encoding, and is compared without it).
// The UTF-8 twins are laid out in lines of their own, so a failure's place is compared only with
// the little-endian twin, which holds the same characters.
#include "lorvane/uLxSAX.h"
#include "support/EventRecorder.h"
#include "support/XmlConfManifest.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <string>

namespace lorvane {
namespace {

/// The transcript of a file through ParseFile, with the failure's line at the end, if any.
std::string EventsOf(const std::string& APath, bool AWithPlaces) {
  TOwned<test::TEventRecorder> Recorder(New<test::TEventRecorder>());
  TOwned<TLxSAXXMLReader> Reader(New<TLxSAXXMLReader>());
  Recorder->Attach(Reader.get());
  try {
    Reader->ParseFile(UTF8ToString(APath), fmOpenRead | fmShareDenyWrite);
  } catch (const Exception& E) {
    Recorder->Transcript += "raised " + StringToUTF8(E.Message()) + "\n";
  }
  // Only the declared encoding may differ between twins.
  static const std::regex Encoding("encoding=\"[^\"]*\"");
  static const std::regex Place("fatalError\\([0-9:-]*\\)");
  const std::string Events = std::regex_replace(Recorder->Transcript, Encoding, "encoding=\"?\"");
  return AWithPlaces ? Events : std::regex_replace(Events, Place, "fatalError(?)");
}

TEST(XmlConfBigEndian, TwinsInOtherEncodingsGiveTheSameEvents) {
  namespace fs = std::filesystem;
  const std::string Root = test::XmlConfDir() + "xmlconf/";
  ASSERT_TRUE(fs::exists(Root)) << Root;
  int BigEndian = 0, Compared = 0;
  for (const auto& Entry : fs::recursive_directory_iterator(Root)) {
    const std::string Path = Entry.path().string();
    if (Entry.path().extension() != ".xml")
      continue;
    const std::string Bytes = test::ReadBytes(Path);
    if (Bytes.size() < 4 || Bytes[0] != '\xFE' || Bytes[1] != '\xFF')
      continue;
    ++BigEndian;
    const std::string Events = EventsOf(Path, true);
    EXPECT_EQ(Events.find("raised The specified encoding"), std::string::npos) << Path;
    for (const auto& [From, To] : {std::pair<std::string, std::string>{"utf-16", "little-endian"},
                                   {"utf-16", "utf-8"},
                                   {"_be", "_le"}}) {
      std::string Twin = Path;
      const std::size_t At = Twin.rfind(From);
      if (At == std::string::npos)
        continue;
      Twin.replace(At, From.size(), To);
      if (!fs::exists(Twin))
        continue;
      ++Compared;
      const bool SameLines = To != "utf-8";
      EXPECT_EQ(SameLines ? Events : EventsOf(Path, false), EventsOf(Twin, SameLines))
          << Path << " against " << Twin;
    }
  }
  std::cout << "[xmlconf] UTF-16 big-endian documents: " << BigEndian
            << ", compared with a twin: " << Compared << "\n";
  EXPECT_GE(BigEndian, 6);
  EXPECT_GE(Compared, 6);
}

} // namespace
} // namespace lorvane
