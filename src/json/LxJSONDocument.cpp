// The JSON document: its root value, and its text in files, streams and code pages.
#include "lorvane/json/LxJSONValues.h"

#include "lorvane/core/LxEncoding.h"
#include "lorvane/core/LxStreams.h"
#include "lorvane/platform/CodePages.h"
#include "json/LxJSONFaces.h"
#include "json/LxJSONWriter.h"

#include <filesystem>
#include <system_error>

namespace lorvane {

using jsonfaces::Face;

TLxJSONDocument::TLxJSONDocument() : TLxJSONBase(/*AOwner=*/nullptr, TKind::Document) {}

TLxJSONDocument* TLxJSONDocument::CreateFromFile(const TFileName& AFilename, Word AMode) {
  TOwned<TLxJSONDocument> Document(New<TLxJSONDocument>());
  Document->LoadFromFile(AFilename, AMode);
  return Document.release();
}

TLxJSONDocument* TLxJSONDocument::CreateFromJSON(const LxJSONString& AJSON) {
  TOwned<TLxJSONDocument> Document(New<TLxJSONDocument>());
  Document->SetAsJSON(AJSON);
  return Document.release();
}

TLxJSONDocument* TLxJSONDocument::CreateFromJSON(const RawByteString& AJSON, Word ACodePage) {
  return CreateFromJSON(TLxEncoding::ConvertA(AJSON, ACodePage));
}

TLxJSONDocument* TLxJSONDocument::CreateFromStream(TStream* AStream, Word ACodePage,
                                                   bool AIsUrlFormEncoded) {
  TOwned<TLxJSONDocument> Document(New<TLxJSONDocument>());
  Document->LoadFromStream(AStream, ACodePage, AIsUrlFormEncoded);
  return Document.release();
}

HRESULT TLxJSONDocument::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxJSONDocument>(this, AIID, AObj,
                                           [&] { return TLxJSONBase::QueryInterface(AIID, AObj); });
}

TLxJSONBase* TLxJSONDocument::CreateRootValue(TLxJSONDataType AValueType) {
  DestroyObjects();
  switch (AValueType) {
  case jdtObject:
    return New<TLxJSONObject>(this);
  case jdtArray:
    return New<TLxJSONArray>(this);
  default:
    return New<TLxJSONSimpleType>(this);
  }
}

TLxJSONBase* TLxJSONDocument::GetRootValue() {
  return FObjects.size() == 1 ? FObjects.front() : nullptr;
}

TLxJSONBase* TLxJSONDocument::RootOrRaise() {
  if (TLxJSONBase* Root = GetRootValue())
    return Root;
  throw ELxJSONParseError(_cLxJSONNoRoot, cLxJSONErrNoRoot);
}

TLxJSONMember* TLxJSONDocument::FindMember(const LxJSONString& AName, bool ACaseInsensitive) {
  return RootOrRaise()->FindMember(AName, ACaseInsensitive);
}

TLxJSONMember* TLxJSONDocument::GetMember(const LxJSONString& AName,
                                          TLxJDOCSelectOptions ASelectOptions) {
  return RootOrRaise()->GetMember(AName, ASelectOptions);
}

TLxJSONBase* TLxJSONDocument::Item(Integer AIdx) { return RootOrRaise()->Item(AIdx); }

void TLxJSONDocument::LoadFromFile(const TFileName& AFilename, Word AMode) {
  std::error_code Failure;
  if (!std::filesystem::exists(std::filesystem::path(StringToUTF8(AFilename)), Failure))
    throw EReadError(_cLxJSONNoFile, {AFilename});
  TOwned<TFileStream> Stream(New<TFileStream>(AFilename, AMode));
  TLxJSONBase::LoadFromStream(Stream.get());
}

void TLxJSONDocument::SaveToFile(const TFileName& AFilename, bool AFormatted) {
  TOwned<TFileStream> Stream(New<TFileStream>(AFilename, fmCreate));
  SaveToStream(Stream.get(), AFormatted, CP_UTF8, /*AWriteBOM=*/true);
}

void TLxJSONDocument::SaveToStream(TStream* AStream, bool AFormatted, Word ACodePage,
                                   bool AWriteBOM) {
  switch (ACodePage) {
  case CP_UTF16LE:
    if (AWriteBOM)
      AStream->WriteBuffer(cLxUTF16LE.data(), cLxUTF16LE.size());
    TLxJSONBase::SaveToStream(AStream, AFormatted, /*ADepth=*/0, /*AAddLeadingSpace=*/false);
    return;
  case CP_UTF8:
    // Encoded as it is written: no UTF-16 text in between.
    jsonwriter::SaveValueUTF8(this, AStream, AFormatted, AWriteBOM);
    return;
  default: {
    TOwned<TLxStringStream> Text(New<TLxStringStream>(CP_UTF16LE, Int64{1024}));
    TLxJSONBase::SaveToStream(Text.get(), AFormatted, /*ADepth=*/0, /*AAddLeadingSpace=*/false);
    const RawByteString Bytes = Text->StringData(ACodePage);
    AStream->WriteBuffer(Bytes.data(), static_cast<Int64>(Bytes.size()));
    return;
  }
  }
}

LxJSONString TLxJSONDocument::GetAsJSON() { return jsonwriter::TextOf(this, /*AFormatted=*/false); }

IPtr<ILxJSONBase> TLxJSONDocument::GetRootValueIntf() { return Face<ILxJSONBase>(GetRootValue()); }

IPtr<ILxJSONBase> TLxJSONDocument::CreateRootValueIntf(TLxJSONDataType AValueType) {
  return Face<ILxJSONBase>(CreateRootValue(AValueType));
}

IPtr<ILxJSONMember> TLxJSONDocument::FindMemberIntf(const LxJSONString& AName,
                                                    bool ACaseInsensitive) {
  return Face<ILxJSONMember>(FindMember(AName, ACaseInsensitive));
}

IPtr<ILxJSONMember> TLxJSONDocument::GetMemberIntf(const LxJSONString& AName,
                                                   TLxJDOCSelectOptions ASelectOptions) {
  return Face<ILxJSONMember>(GetMember(AName, ASelectOptions));
}

LxJSONString LxFormatJSON(const LxJSONString& AJSON) {
  TOwned<TLxJSONDocument> Document(New<TLxJSONDocument>());
  Document->SetAsJSON(AJSON);
  return Document->GetAsJSON();
}

LxJSONString LxFormatJSON(const AnsiString& AJSON) {
  TOwned<TLxJSONDocument> Document(New<TLxJSONDocument>());
  Document->SetAsJSON(TLxEncoding::ConvertA(AJSON));
  return Document->GetFormattedJSON();
}

} // namespace lorvane
