// Memory and file streams: positions, exact reads, copying, open modes and their failures.
#include "lorvane/platform/Streams.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <unistd.h>

namespace lorvane {
namespace {

UnicodeString TempFileName(const char* AName) {
  return UTF8ToString(std::string(::testing::TempDir()) + AName + "." + std::to_string(::getpid()));
}

TEST(MemoryStream, GrowsOnWriteAndReadsBackExactly) {
  TOwned<TMemoryStream> S(New<TMemoryStream>());
  S->WriteBuffer("hello world", 11);
  EXPECT_EQ(S->GetSize(), 11);
  S->SetPosition(6);
  char Buffer[5];
  S->ReadBuffer(Buffer, 5);
  EXPECT_EQ(std::string(Buffer, 5), "world");
  EXPECT_EQ(S->Read(Buffer, 5), 0) << "at the end";
  try {
    S->SetPosition(8);
    S->ReadBuffer(Buffer, 5);
    FAIL();
  } catch (const EReadError& E) {
    EXPECT_EQ(E.Message(), u"Stream read error");
  }
  S->Seek(2, soEnd);
  S->WriteBuffer("!", 1);
  EXPECT_EQ(S->GetSize(), 14) << "writing behind the end fills the gap";
  EXPECT_EQ(S->Memory()[11], 0);
  S->SetSize(5);
  EXPECT_EQ(S->GetPosition(), 5);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(S->Memory()), 5), "hello");
}

TEST(MemoryStream, CopyFromWithZeroCopiesTheWholeSource) {
  TOwned<TMemoryStream> Source(New<TMemoryStream>());
  std::string Big(200000, 'x');
  Big[123456] = 'y';
  Source->WriteBuffer(Big.data(), Int64(Big.size()));
  TOwned<TMemoryStream> Target(New<TMemoryStream>());
  EXPECT_EQ(Target->CopyFrom(Source.get(), 0), Int64(Big.size()));
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(Target->Memory()), Big.size()), Big);
  Source->SetPosition(123456);
  Target->Clear();
  EXPECT_EQ(Target->CopyFrom(Source.get(), 2), 2);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(Target->Memory()), 2), "yx");
  EXPECT_THROW(Target->CopyFrom(Source.get(), 1000000), EReadError);
}

TEST(FileStream, CreateWriteReopenAndTruncate) {
  const UnicodeString Name = TempFileName("lorvane_fs");
  {
    TOwned<TFileStream> F(New<TFileStream>(Name, fmCreate));
    F->WriteBuffer("0123456789", 10);
    F->SetSize(4);
    EXPECT_EQ(F->GetSize(), 4);
  }
  {
    TOwned<TFileStream> F(New<TFileStream>(Name, fmOpenRead | fmShareDenyNone));
    char Buffer[8] = {};
    EXPECT_EQ(F->Read(Buffer, 8), 4);
    EXPECT_EQ(std::string(Buffer), "0123");
    EXPECT_EQ(F->Write("x", 1), 0) << "opened for reading only";
    EXPECT_THROW(F->WriteBuffer("x", 1), EWriteError);
  }
  {
    TOwned<TFileStream> F(New<TFileStream>(Name, fmOpenReadWrite));
    F->Seek(0, soEnd);
    F->WriteBuffer("45", 2);
  }
  TOwned<TMemoryStream> M(New<TMemoryStream>());
  M->LoadFromFile(Name);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(M->Memory()), M->GetSize()), "012345");
  std::remove(StringToUTF8(Name).c_str());
}

TEST(FileStream, MissingFilesAndFoldersRaiseWithTheName) {
  const UnicodeString Missing = TempFileName("lorvane_missing");
  try {
    New<TFileStream>(Missing, fmOpenRead);
    FAIL();
  } catch (const EFOpenError& E) {
    EXPECT_EQ(E.Message(), u"Cannot open file \"" + Missing + u"\". No such file or directory");
  }
  try {
    New<TFileStream>(Missing + u"/sub/file", fmCreate);
    FAIL();
  } catch (const EFCreateError& E) {
    EXPECT_EQ(E.Message(),
              u"Cannot create file \"" + Missing + u"/sub/file\". No such file or directory");
  }
  EXPECT_THROW(New<TFileStream>(UTF8ToString(::testing::TempDir()), fmOpenRead), EFOpenError);
}

} // namespace
} // namespace lorvane
