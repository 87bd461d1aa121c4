/// What the two JSON fuzz targets share:
///   TCheckingJSONHandler  reads every argument, checks the nesting of the events it gets
///   Documented            runs an action and lets through only the library's documented failures
///   RoundTrip             loads bytes into a document, writes it both ways, reads the text again
#pragma once

#include "lorvane/core/LxStreams.h"
#include "lorvane/uLxJSON.h"

#include <cstddef>
#include <cstdint>
#include <typeinfo>
#include <vector>

namespace lorvane::fuzz {

/// With AStrict, the events must nest as the JSON reader promises: members only in objects, one
/// value per member, every container closed by its own kind, EndDocument at the top. The form
/// reader's closing calls don't pair with its opening ones, so its handler isn't strict.
class TCheckingJSONHandler : public TLxObject,
                             public ILxJSONContentHandler,
                             public ILxJSONErrorHandler {
  LX_CLASS(TCheckingJSONHandler, TLxObject)
  explicit TCheckingJSONHandler(bool AStrict) : FStrict(AStrict) { SetAutoDestroy(false); }

  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override {
    if (AIID == ILxJSONContentHandler::IID)
      *AObj = static_cast<ILxJSONContentHandler*>(this);
    else if (AIID == ILxJSONErrorHandler::IID)
      *AObj = static_cast<ILxJSONErrorHandler*>(this);
    else
      return TLxObject::QueryInterface(AIID, AObj);
    _AddRef();
    return S_OK;
  }

  /// Before each parse.
  void Reset() {
    FOpen.clear();
    FMemberHasValue.clear();
    FStarted = FEnded = false;
    FFatalErrors = 0;
  }
  bool Ended() const noexcept { return FEnded; }
  int FatalErrors() const noexcept { return FFatalErrors; }
  unsigned Sum() const noexcept { return FSum; }

  void SetDocumentLocator(ILxJSONLocator*) override { __builtin_trap(); }
  void StartDocument() override {
    Check(!FStarted);
    FStarted = true;
  }
  void StartObject() override {
    TakeValue();
    FOpen.push_back(Object);
  }
  void StartMember(const LxJSONString& AName) override {
    Touch(AName);
    Check(!FOpen.empty() && FOpen.back() == Object);
    FOpen.push_back(Member);
    FMemberHasValue.push_back(false);
  }
  void StartArray() override {
    TakeValue();
    FOpen.push_back(Array);
  }
  void Value(TLxJSONDataType AValueType, const LxJSONString& AValue) override {
    Touch(AValue);
    if (AValueType > jdtBoolean)
      __builtin_trap(); // readers deliver only simple values here
    TakeValue();
  }
  void EndArray() override { Close(Array); }
  void EndMember() override {
    Check(!FMemberHasValue.empty() && FMemberHasValue.back());
    Close(Member);
    if (!FMemberHasValue.empty())
      FMemberHasValue.pop_back();
  }
  void EndObject() override { Close(Object); }
  void EndDocument() override {
    Check(FStarted && !FEnded && FOpen.empty());
    FEnded = true;
  }
  void Warning(ILxJSONLocator*, const LxJSONString&) override { __builtin_trap(); }
  void Error(ILxJSONLocator*, const LxJSONString&) override { __builtin_trap(); }
  void FatalError(ILxJSONLocator* ALocator, const LxJSONString& AMessage) override {
    ++FFatalErrors;
    FSum += static_cast<unsigned>(ALocator->GetLineNr() + ALocator->GetColNr());
    Touch(ALocator->GetPublicID());
    Touch(AMessage);
  }

protected:
  ~TCheckingJSONHandler() override = default;

private:
  enum : Byte { Object, Array, Member };

  void Check(bool ACondition) const {
    if (FStrict && !ACondition)
      __builtin_trap();
  }
  /// A value may stand at the top, in an array, or as the one value of a member.
  void TakeValue() {
    Check(FStarted && !FEnded);
    if (FOpen.empty() || FOpen.back() == Array)
      return;
    Check(FOpen.back() == Member && !FMemberHasValue.back());
    if (!FMemberHasValue.empty())
      FMemberHasValue.back() = true;
  }
  void Close(Byte AKind) {
    Check(!FOpen.empty() && FOpen.back() == AKind);
    if (!FOpen.empty())
      FOpen.pop_back();
  }
  void Touch(const LxJSONString& AText) {
    for (char16_t C : AText)
      FSum += C;
  }

  bool FStrict;
  std::vector<Byte> FOpen;
  std::vector<bool> FMemberHasValue;
  bool FStarted = false, FEnded = false;
  int FFatalErrors = 0;
  unsigned FSum = 0;
};

/// Whether AError is one of the documented failures of reading and building JSON: the library's
/// own exceptions, conversions, casts, and the few plain Exceptions with fixed messages.
inline bool IsDocumented(const Exception& AError) {
  if (dynamic_cast<const ELxException*>(&AError) || dynamic_cast<const EConvertError*>(&AError) ||
      dynamic_cast<const EInvalidCast*>(&AError))
    return true;
  if (typeid(AError) != typeid(Exception))
    return false;
  const UnicodeString& Message = AError.Message();
  return Message == _cLxJSONEncodingNotSupported || Message == u"Invalid objecttype" ||
         Message == u"Invalid UTF8 Encoding detected" ||
         Message.starts_with(u"The parser expected to read a \"[\" character, but \"");
}

/// Runs AAction; true when it returned, false when it raised a documented failure. Anything else
/// stops the program, so that the fuzzer reports it.
template <class TAction> bool Documented(TAction AAction) {
  try {
    AAction();
    return true;
  } catch (const Exception& E) {
    if (!IsDocumented(E))
      __builtin_trap();
    return false;
  }
}

/// The bytes into a document (a form post with AIsUrlFormEncoded, else the code page from a byte
/// order mark or the text), then whatever was built, also before a failure, written compact and
/// indented; each written text must read again into a document without failure.
inline void RoundTrip(const uint8_t* AData, size_t ASize, bool AIsUrlFormEncoded) {
  TOwned<TLxJSONDocument> Document(New<TLxJSONDocument>());
  Documented([&] {
    TOwned<TLxMemoryStream> Stream(
        New<TLxMemoryStream>(static_cast<const void*>(AData), static_cast<Int64>(ASize)));
    if (AIsUrlFormEncoded)
      Document->LoadFromStream(Stream.get(), 65001, true);
    else
      Document->LoadFromStream(Stream.get());
  });
  for (bool Formatted : {false, true}) {
    LxJSONString Text;
    if (!Documented(
            [&] { Text = Formatted ? Document->GetFormattedJSON() : Document->GetAsJSON(); }))
      continue;
    TOwned<TLxJSONDocument> Again(New<TLxJSONDocument>());
    try {
      Again->SetAsJSON(Text);
    } catch (const Exception&) {
      __builtin_trap(); // the library wrote a text that it can't read
    }
  }
}

} // namespace lorvane::fuzz
