// The readers' frame: the cursor and owned streams go on every way out, the failure road reports
// once and raises the original, and the locator's place after a text that ended too early.
#include "core/internal/ReaderFrame.h"

#include "support/TestHelpers.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <vector>

namespace lorvane {
namespace {

class ReaderFrame : public test::LiveObjectsTest {
protected:
  /// Runs a parse over ASource whose body is ABody; the cursor reads the source as UTF-8.
  template <class TBody> void RunOver(readerframe::TSource ASource, TBody ABody) {
    readerframe::Run(
        std::move(ASource), FCursor, FEndedEarly,
        [](const readerframe::TSource& S) {
          return New<TLxTextParser>(S.Stream, /*AStreamOwner=*/false, Word(65001));
        },
        ABody);
  }

  TLxTextParser* FCursor = nullptr;
  bool FEndedEarly = true;
};

TEST_F(ReaderFrame, CursorAndOwnedStreamGoOnEveryWayOut) {
  const std::string Text = "abc";
  RunOver(readerframe::OfBytes(Text, 65001), [&] {
    ASSERT_NE(FCursor, nullptr);
    EXPECT_EQ(FCursor->ReadChar()[0], u'a');
    EXPECT_FALSE(FEndedEarly) << "cleared when a parse starts";
  });
  EXPECT_EQ(FCursor, nullptr);
  EXPECT_THROW(RunOver(readerframe::OfBytes(Text, 65001), [] { throw EConvertError(u"x"); }),
               EConvertError);
  EXPECT_EQ(FCursor, nullptr);
  // A cursor that can't be made leaves the owned stream freed (the fixture checks for leaks).
  EXPECT_THROW(
      readerframe::Run(
          readerframe::OfBytes(Text, 65001), FCursor, FEndedEarly,
          [](const readerframe::TSource&) -> TLxTextParser* { throw EConvertError(u"no cursor"); },
          [] { ADD_FAILURE() << "no parse without a cursor"; }),
      EConvertError);
}

TEST_F(ReaderFrame, CallersStreamIsReadFromItsPositionAndKept) {
  TOwned<TLxMemoryStream> Stream(New<TLxMemoryStream>(Int64(0)));
  Stream->WriteBuffer("xyz", 3);
  Stream->SetPosition(1);
  RunOver(readerframe::OfStream(Stream.get(), 65001),
          [&] { EXPECT_EQ(FCursor->ReadChar()[0], u'y'); });
  EXPECT_EQ(Stream->GetSize(), 3) << "still alive and whole";
}

TEST_F(ReaderFrame, StringSourcesAreReadInPlace) {
  const std::u16string Text = u"<a/>";
  const readerframe::TSource Wide = readerframe::OfText(Text);
  auto* Memory = dynamic_cast<TLxMemoryStream*>(Wide.Stream);
  ASSERT_NE(Memory, nullptr);
  EXPECT_EQ(static_cast<const void*>(Memory->Memory()), static_cast<const void*>(Text.data()));
  EXPECT_EQ(Memory->GetSize(), 8);
  EXPECT_EQ(Wide.CodePage, 1200);

  const std::string Bytes = "<b/>";
  const readerframe::TSource Narrow = readerframe::OfBytes(Bytes, 28591);
  EXPECT_EQ(static_cast<const void*>(static_cast<TLxMemoryStream*>(Narrow.Stream)->Memory()),
            static_cast<const void*>(Bytes.data()));
  EXPECT_EQ(Narrow.CodePage, 28591);
  EXPECT_FALSE(Narrow.FromFile);
}

TEST_F(ReaderFrame, MissingFileRaisesBeforeAnyCursor) {
  EXPECT_THROW(readerframe::OfFile(u"/nonexistent/lorvane/frame.xml", fmOpenRead), EFOpenError);
}

TEST_F(ReaderFrame, FailureRoadReportsOnceAndRaisesTheOriginal) {
  struct TCase {
    const char* Name;
    std::function<void()> Raise;
    bool EndedEarly;
    UnicodeString Message;
  };
  const TCase Cases[] = {
      {"end of text", [] { throw ELxTextParserEOF(u"Unexpected end of the text", 1); }, true,
       u"Unexpected end of the text"},
      {"library failure", [] { throw EConvertError(u"bad digit"); }, false, u"bad digit"},
      {"standard failure", [] { throw std::runtime_error("caf\xC3\xA9"); }, false, u"caf\u00e9"},
  };
  for (const TCase& Case : Cases) {
    bool EndedEarly = !Case.EndedEarly;
    std::vector<UnicodeString> Reports;
    try {
      readerframe::ReportingFailures(EndedEarly, Case.Raise, [&](const UnicodeString& AMessage) {
        Reports.push_back(AMessage);
      });
      ADD_FAILURE() << Case.Name << ": nothing raised";
    } catch (const std::exception& E) {
      // The very exception comes back, not a copy sliced to a base class.
      EXPECT_EQ(readerframe::MessageOf(E), Case.Message) << Case.Name;
    }
    EXPECT_EQ(EndedEarly, Case.EndedEarly) << Case.Name;
    ASSERT_EQ(Reports.size(), 1u) << Case.Name;
    EXPECT_EQ(Reports[0], Case.Message) << Case.Name;
  }

  bool EndedEarly = false;
  bool Reported = false;
  readerframe::ReportingFailures(
      EndedEarly, [] {}, [&](const UnicodeString&) { Reported = true; });
  EXPECT_FALSE(Reported) << "a parse that succeeds reports nothing";

  // An exception out of the report takes the place of the parse's.
  EXPECT_THROW(readerframe::ReportingFailures(
                   EndedEarly, [] { throw ELxTextParserEOF(u"Unexpected end of the text", 1); },
                   [](const UnicodeString&) { throw EConvertError(u"from the handler"); }),
               EConvertError);
}

TEST_F(ReaderFrame, LocatorGivesTheKeptPlaceTheCursorsOrNone) {
  const std::string Text = "a\nbc";
  RunOver(readerframe::OfBytes(Text, 65001), [&] {
    FCursor->SkipChars(3);
    EXPECT_EQ(readerframe::LocatorLine(false, 7, FCursor), 2);
    EXPECT_EQ(readerframe::LocatorColumn(false, 7, FCursor), 2);
    EXPECT_EQ(readerframe::LocatorLine(true, 7, FCursor), 7) << "the kept place wins";
  });
  EXPECT_EQ(readerframe::LocatorLine(false, 7, FCursor), -1);
  EXPECT_EQ(readerframe::LocatorColumn(false, 7, FCursor), -1);
  EXPECT_EQ(readerframe::LocatorColumn(true, 5, FCursor), 5);
}

} // namespace
} // namespace lorvane
