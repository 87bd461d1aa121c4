// The abstract stream, the memory stream and the file stream.
#include "lorvane/platform/Streams.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace lorvane {

// --- TStream
// --------------------------------------------------------------------------------------
Int64 TStream::GetSize() {
  const Int64 Position = Seek(0, soCurrent);
  const Int64 Size = Seek(0, soEnd);
  Seek(Position, soBeginning);
  return Size;
}

void TStream::SetSize(Int64) { throw EStreamError(u"Stream size can't be changed"); }

void TStream::ReadBuffer(void* ABuffer, Int64 ACount) {
  auto* Target = static_cast<Byte*>(ABuffer);
  while (ACount > 0) {
    const Int64 Got = Read(Target, ACount);
    if (Got <= 0)
      throw EReadError(u"Stream read error");
    Target += Got;
    ACount -= Got;
  }
}

void TStream::WriteBuffer(const void* ABuffer, Int64 ACount) {
  auto* Source = static_cast<const Byte*>(ABuffer);
  while (ACount > 0) {
    const Int64 Put = Write(Source, ACount);
    if (Put <= 0)
      throw EWriteError(u"Stream write error");
    Source += Put;
    ACount -= Put;
  }
}

Int64 TStream::CopyFrom(TStream* ASource, Int64 ACount) {
  if (ACount == 0) {
    ASource->SetPosition(0);
    ACount = ASource->GetSize();
  }
  constexpr Int64 BlockSize = 64 * 1024;
  std::vector<Byte> Block(static_cast<std::size_t>(std::min(ACount, BlockSize)));
  Int64 Left = ACount;
  while (Left > 0) {
    const Int64 Chunk = std::min(Left, BlockSize);
    ASource->ReadBuffer(Block.data(), Chunk);
    WriteBuffer(Block.data(), Chunk);
    Left -= Chunk;
  }
  return ACount;
}

// --- TMemoryStream
// --------------------------------------------------------------------------------
Int64 TMemoryStream::Read(void* ABuffer, Int64 ACount) {
  const Int64 Count = std::max<Int64>(0, std::min(ACount, FSize - FPosition));
  if (Count > 0)
    std::memcpy(ABuffer, FData.data() + FPosition, static_cast<std::size_t>(Count));
  FPosition += Count;
  return Count;
}

Int64 TMemoryStream::Write(const void* ABuffer, Int64 ACount) {
  if (ACount <= 0)
    return 0;
  const Int64 End = FPosition + ACount;
  if (End > static_cast<Int64>(FData.size()))
    FData.resize(std::max<std::size_t>(static_cast<std::size_t>(End), FData.size() * 2));
  std::memcpy(FData.data() + FPosition, ABuffer, static_cast<std::size_t>(ACount));
  FPosition = End;
  FSize = std::max(FSize, End);
  return ACount;
}

Int64 TMemoryStream::Seek(Int64 AOffset, TSeekOrigin AOrigin) {
  const Int64 Base = AOrigin == soBeginning ? 0 : AOrigin == soCurrent ? FPosition : FSize;
  FPosition = std::max<Int64>(0, Base + AOffset);
  return FPosition;
}

void TMemoryStream::SetSize(Int64 ANewSize) {
  ANewSize = std::max<Int64>(0, ANewSize);
  FData.resize(static_cast<std::size_t>(ANewSize));
  FSize = ANewSize;
  FPosition = std::min(FPosition, FSize);
}

void TMemoryStream::Clear() {
  FData.clear();
  FData.shrink_to_fit();
  FSize = 0;
  FPosition = 0;
}

void TMemoryStream::LoadFromStream(TStream* AStream) {
  AStream->SetPosition(0);
  const Int64 Count = AStream->GetSize();
  SetSize(Count);
  if (Count > 0)
    AStream->ReadBuffer(FData.data(), Count);
  FPosition = 0;
}

void TMemoryStream::SaveToStream(TStream* AStream) {
  if (FSize > 0)
    AStream->WriteBuffer(FData.data(), FSize);
}

void TMemoryStream::LoadFromFile(const TFileName& AFileName) {
  TOwned<TFileStream> File(New<TFileStream>(AFileName, fmOpenRead | fmShareDenyWrite));
  LoadFromStream(File.get());
}

void TMemoryStream::SaveToFile(const TFileName& AFileName) {
  TOwned<TFileStream> File(New<TFileStream>(AFileName, fmCreate));
  SaveToStream(File.get());
}

// --- TFileStream
// ----------------------------------------------------------------------------------
TFileStream::TFileStream(const TFileName& AFileName, Word AMode) : FFileName(AFileName) {
  const std::string Path = StringToUTF8(AFileName);
  if (AMode == fmCreate || (AMode & 0xFF00) == fmCreate) {
    FHandle = ::open(Path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (FHandle < 0)
      throw EFCreateError(u"Cannot create file \"%s\". %s", {AFileName, std::strerror(errno)});
    return;
  }
  static constexpr int AccessFlags[] = {O_RDONLY, O_WRONLY, O_RDWR};
  const int Access = AMode & 0x3;
  if (Access > 2)
    throw EFOpenError(u"Cannot open file \"%s\". %s", {AFileName, "Invalid access mode"});
  FHandle = ::open(Path.c_str(), AccessFlags[Access] | O_CLOEXEC);
  if (FHandle < 0)
    throw EFOpenError(u"Cannot open file \"%s\". %s", {AFileName, std::strerror(errno)});
  struct stat Info;
  if (::fstat(FHandle, &Info) == 0 && S_ISDIR(Info.st_mode)) {
    ::close(FHandle);
    FHandle = -1;
    throw EFOpenError(u"Cannot open file \"%s\". %s", {AFileName, std::strerror(EISDIR)});
  }
}

TFileStream::~TFileStream() {
  if (FHandle >= 0)
    ::close(FHandle);
}

Int64 TFileStream::Read(void* ABuffer, Int64 ACount) {
  if (ACount <= 0)
    return 0;
  ssize_t Got;
  do
    Got = ::read(FHandle, ABuffer, static_cast<std::size_t>(ACount));
  while (Got < 0 && errno == EINTR);
  return Got < 0 ? 0 : Got;
}

Int64 TFileStream::Write(const void* ABuffer, Int64 ACount) {
  if (ACount <= 0)
    return 0;
  ssize_t Put;
  do
    Put = ::write(FHandle, ABuffer, static_cast<std::size_t>(ACount));
  while (Put < 0 && errno == EINTR);
  return Put < 0 ? 0 : Put;
}

Int64 TFileStream::Seek(Int64 AOffset, TSeekOrigin AOrigin) {
  static constexpr int Whence[] = {SEEK_SET, SEEK_CUR, SEEK_END};
  const off_t Result = ::lseek(FHandle, AOffset, Whence[static_cast<int>(AOrigin)]);
  return Result < 0 ? -1 : Result;
}

void TFileStream::SetSize(Int64 ANewSize) {
  if (::ftruncate(FHandle, ANewSize) != 0)
    throw EStreamError(u"Stream size can't be changed");
  if (GetPosition() > ANewSize)
    Seek(ANewSize, soBeginning);
}

} // namespace lorvane
