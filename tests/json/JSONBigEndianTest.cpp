// UTF-16 big-endian JSON: named by its code page or by its byte order mark, it gives the events
// and the tree that the same text gives in UTF-16 little endian, read in place or in pieces, and
// a tree writes itself in it.
#include "lorvane/core/LxEncoding.h"
#include "lorvane/core/LxStreams.h"
#include "lorvane/platform/CodePages.h"
#include "lorvane/uLxJSON.h"
#include "support/JSONEventRecorder.h"
#include "support/TestHelpers.h"
#include "support/TestStreams.h"

#include <gtest/gtest.h>

#include <string>

namespace lorvane {
namespace {

std::string BigEndian(std::u16string_view AText) {
  std::string Bytes;
  for (char16_t C : AText)
    Bytes += {char(C >> 8), char(C & 0xFF)};
  return Bytes;
}

class JSONBigEndian : public test::LiveObjectsTest {
protected:
  const std::u16string Text =
      u" {\"caf\u00E9\":[\"\\u00e9\U0001F600\",-1.5e3,true,null],\"o\":{\"k\":\"\u4E2D\"}}";

  /// The reader's transcript of the bytes in ACodePage, from a stream giving AChunk bytes a read.
  std::string Events(const std::string& ABytes, Word ACodePage, Int64 AChunk) {
    TOwned<test::TJSONEventRecorder> Recorder(New<test::TJSONEventRecorder>());
    TOwned<TLxJSONReader> Reader(New<TLxJSONReader>());
    Recorder->Attach(Reader.get());
    TOwned<test::TChunkedStream> Stream(New<test::TChunkedStream>(ABytes, AChunk));
    Reader->ParseStream(Stream.get(), ACodePage);
    return Recorder->Transcript;
  }
};

TEST_F(JSONBigEndian, TheReaderGivesTheEventsOfLittleEndian) {
  const std::string Expected = Events(test::Utf16Bytes(Text), CP_UTF16LE, 1 << 20);
  ASSERT_NE(Expected.find("startMember(caf\xC3\xA9)"), std::string::npos) << Expected;
  for (Int64 Chunk : {Int64(1), Int64(3), Int64(1) << 20})
    EXPECT_EQ(Events(BigEndian(Text), CP_UTF16BE, Chunk), Expected) << Chunk;
  // In place, from a buffer.
  TOwned<test::TJSONEventRecorder> Recorder(New<test::TJSONEventRecorder>());
  TOwned<TLxJSONReader> Reader(New<TLxJSONReader>());
  Recorder->Attach(Reader.get());
  const std::string Bytes = BigEndian(Text);
  Reader->ParseBuffer(Bytes.data(), Cardinal(Bytes.size()), CP_UTF16BE);
  EXPECT_EQ(Recorder->Transcript, Expected);
}

TEST_F(JSONBigEndian, ADocumentLoadsFromBytesBehindTheMark) {
  TOwned<TLxJSONDocument> Little(TLxJSONDocument::CreateFromJSON(LxJSONString(Text)));
  const std::string Bytes = "\xFE\xFF" + BigEndian(Text);
  TOwned<TLxMemoryStream> Stream(New<TLxMemoryStream>(Bytes.data(), Int64(Bytes.size())));
  EXPECT_EQ(LxGetCodePage(Stream.get()), CP_UTF16BE);
  Stream->SetPosition(0);
  TOwned<TLxJSONDocument> Big(New<TLxJSONDocument>());
  Big->LoadFromStream(Stream.get());
  EXPECT_EQ(StringToUTF8(Big->GetAsJSON()), StringToUTF8(Little->GetAsJSON()));
  // And written in 1201 as any code page is: the same text, in that byte order.
  TOwned<TMemoryStream> Out(New<TMemoryStream>());
  Big->SaveToStream(Out.get(), /*AFormatted=*/false, CP_UTF16BE, /*AWriteBOM=*/false);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(Out->Memory()), std::size_t(Out->GetSize())),
            BigEndian(Little->GetAsJSON()));
}

} // namespace
} // namespace lorvane
