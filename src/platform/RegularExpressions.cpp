// Regular expressions over PCRE2's 16-bit library, with a per-thread cache of compiled patterns.
#include "lorvane/platform/RegularExpressions.h"

#define PCRE2_CODE_UNIT_WIDTH 16
#include <pcre2.h>

#include <algorithm>
#include <new>

namespace lorvane {

namespace detail {

/// One compiled pattern. Immutable once made, so threads may share it.
struct TRegExCode {
  pcre2_code* Code = nullptr;
  uint32_t CaptureCount = 0;
  ~TRegExCode() { pcre2_code_free(Code); }
};

} // namespace detail

namespace {

using detail::TRegExCode;
using View = std::u16string_view;

PCRE2_SPTR Units(View AText) noexcept { return reinterpret_cast<PCRE2_SPTR>(AText.data()); }

UnicodeString ErrorText(int ACode) {
  PCRE2_UCHAR Buffer[256];
  const int Length = pcre2_get_error_message(ACode, Buffer, std::size(Buffer));
  return Length < 0 ? UnicodeString(u"unknown error")
                    : UnicodeString(reinterpret_cast<const char16_t*>(Buffer), Length);
}

[[noreturn]] void RaiseMatchError(int ACode) {
  throw ERegularExpressionError(u"Error matching the regex: %s", {ErrorText(ACode)});
}

uint32_t CompileOptions(TRegExOptions AOptions) noexcept {
  // Invalid UTF-16 in a subject (a lone surrogate from a document) must not fail the match.
  uint32_t Result = PCRE2_UTF | PCRE2_UCP | PCRE2_MATCH_INVALID_UTF;
  if (AOptions.Contains(roIgnoreCase))
    Result |= PCRE2_CASELESS;
  if (AOptions.Contains(roMultiLine))
    Result |= PCRE2_MULTILINE;
  if (AOptions.Contains(roSingleLine))
    Result |= PCRE2_DOTALL;
  if (AOptions.Contains(roIgnorePatternSpace))
    Result |= PCRE2_EXTENDED;
  if (AOptions.Contains(roExplicitCapture))
    Result |= PCRE2_NO_AUTO_CAPTURE;
  return Result;
}

std::shared_ptr<const TRegExCode> Compile(View APattern, uint32_t AOptions) {
  int ErrorCode = 0;
  PCRE2_SIZE ErrorOffset = 0;
  auto Result = std::make_shared<TRegExCode>();
  Result->Code =
      pcre2_compile(Units(APattern), APattern.size(), AOptions, &ErrorCode, &ErrorOffset, nullptr);
  if (!Result->Code)
    throw ERegularExpressionError(u"Error in regular expression at offset %d: %s",
                                  {static_cast<Int64>(ErrorOffset), ErrorText(ErrorCode)});
  pcre2_pattern_info(Result->Code, PCRE2_INFO_CAPTURECOUNT, &Result->CaptureCount);
  return Result;
}

/// The state one thread keeps: its compiled patterns, most recently used last, a match context
/// with the limit, and match data that grows to the largest group count asked for. Nothing of it
/// is visible: a pattern behaves the same compiled afresh or taken from here.
struct TThreadState {
  struct TEntry {
    UnicodeString Pattern;
    uint32_t Options;
    std::shared_ptr<const TRegExCode> Code;
  };
  std::vector<TEntry> Entries;
  pcre2_match_context* Context = nullptr;
  pcre2_match_data* Data = nullptr;
  uint32_t DataPairs = 0;
  UInt64 Compiled = 0;

  TThreadState() {
    Context = pcre2_match_context_create(nullptr);
    if (Context)
      pcre2_set_match_limit(Context, static_cast<uint32_t>(cRegExMatchLimit));
  }
  ~TThreadState() {
    pcre2_match_data_free(Data);
    pcre2_match_context_free(Context);
  }
  TThreadState(const TThreadState&) = delete;
  TThreadState& operator=(const TThreadState&) = delete;

  std::shared_ptr<const TRegExCode> Find(View APattern, uint32_t AOptions) {
    for (auto It = Entries.rbegin(); It != Entries.rend(); ++It)
      if (It->Options == AOptions && It->Pattern == APattern) {
        if (It != Entries.rbegin())
          std::rotate(std::prev(It.base()), It.base(), Entries.end());
        return Entries.back().Code;
      }
    auto Code = Compile(APattern, AOptions);
    ++Compiled;
    if (Entries.size() >= static_cast<size_t>(cRegExCacheSize))
      Entries.erase(Entries.begin());
    Entries.push_back({UnicodeString(APattern), AOptions, Code});
    return Code;
  }

  pcre2_match_data* MatchData(uint32_t APairs) {
    if (!Data || DataPairs < APairs) {
      pcre2_match_data_free(Data);
      Data = pcre2_match_data_create(APairs, nullptr);
      if (!Data)
        throw std::bad_alloc();
      DataPairs = APairs;
    }
    return Data;
  }
};

// One per thread: compiled patterns are cached per thread (see HACKING), so no lock is needed.
TThreadState& ThreadState() {
  thread_local TThreadState State;
  return State;
}

/// A run of matches over one subject, one pcre2_match call at a time.
class TMatcher {
public:
  TMatcher(const TRegExCode& ACode, View ASubject, uint32_t AExtraOptions = 0)
      : FCode(ACode), FSubject(ASubject), FExtra(AExtraOptions) {
    TThreadState& State = ThreadState();
    FContext = State.Context;
    FData = State.MatchData(ACode.CaptureCount + 1);
  }

  /// The next match at or behind AStart; false for none. An empty match at AStart is refused
  /// when ANotEmptyAtStart is set (the retry after an empty match).
  bool Next(size_t AStart, bool ANotEmptyAtStart) {
    uint32_t Options = FExtra;
    if (ANotEmptyAtStart)
      Options |= PCRE2_NOTEMPTY_ATSTART | PCRE2_ANCHORED;
    const int Rc =
        pcre2_match(FCode.Code, Units(FSubject), FSubject.size(), AStart, Options, FData, FContext);
    if (Rc == PCRE2_ERROR_NOMATCH)
      return false;
    if (Rc < 0)
      RaiseMatchError(Rc);
    const PCRE2_SIZE* Vector = pcre2_get_ovector_pointer(FData);
    FStart = Vector[0];
    FEnd = Vector[1];
    // \K may move a match's start; it is refused inside lookarounds, so a start can't fall
    // before the search or behind the end, but a broken vector must never index the subject.
    if (FStart > FEnd || FEnd > FSubject.size() || FStart < AStart)
      RaiseMatchError(PCRE2_ERROR_INTERNAL);
    return true;
  }
  size_t Start() const noexcept { return FStart; }
  size_t End() const noexcept { return FEnd; }

  /// The text of group AGroup of the last match; empty when it took part in none.
  View Group(uint32_t AGroup) const noexcept {
    if (AGroup > FCode.CaptureCount)
      return {};
    const PCRE2_SIZE* Vector = pcre2_get_ovector_pointer(FData);
    if (Vector[2 * AGroup] == PCRE2_UNSET || Vector[2 * AGroup + 1] < Vector[2 * AGroup])
      return {};
    return FSubject.substr(Vector[2 * AGroup], Vector[2 * AGroup + 1] - Vector[2 * AGroup]);
  }
  /// The number of the group named AName, or -1.
  int GroupNumber(View AName) const {
    UnicodeString Name(AName);
    const int Number = pcre2_substring_number_from_name(FCode.Code, Units(Name));
    return Number < 0 ? -1 : Number;
  }
  uint32_t CaptureCount() const noexcept { return FCode.CaptureCount; }
  View Subject() const noexcept { return FSubject; }

  /// The position one character behind APos: a surrogate pair counts as one.
  size_t StepOver(size_t APos) const noexcept {
    if (APos + 1 < FSubject.size() && FSubject[APos] >= 0xD800 && FSubject[APos] <= 0xDBFF &&
        FSubject[APos + 1] >= 0xDC00 && FSubject[APos + 1] <= 0xDFFF)
      return APos + 2;
    return APos + 1;
  }

private:
  const TRegExCode& FCode;
  View FSubject;
  uint32_t FExtra;
  pcre2_match_context* FContext;
  pcre2_match_data* FData;
  size_t FStart = 0;
  size_t FEnd = 0;
};

bool IsDigit(WideChar C) noexcept { return C >= u'0' && C <= u'9'; }

/// Appends the replacement for the matcher's last match.
void AppendReplacement(const TMatcher& AMatch, View AReplacement, UnicodeString& AResult) {
  for (size_t I = 0; I < AReplacement.size(); ++I) {
    const WideChar C = AReplacement[I];
    if ((C != u'$' && C != u'\\') || I + 1 >= AReplacement.size()) {
      AResult += C;
      continue;
    }
    const WideChar Next = AReplacement[I + 1];
    if (IsDigit(Next)) {
      uint32_t Group = Next - u'0';
      ++I;
      if (I + 1 < AReplacement.size() && IsDigit(AReplacement[I + 1])) {
        const uint32_t Two = Group * 10 + (AReplacement[I + 1] - u'0');
        if (Two <= AMatch.CaptureCount()) {
          Group = Two;
          ++I;
        }
      }
      AResult += AMatch.Group(Group);
      continue;
    }
    if (Next == u'{') {
      const size_t Close = AReplacement.find(u'}', I + 2);
      if (Close != View::npos) {
        const View Name = AReplacement.substr(I + 2, Close - I - 2);
        int Group = -1;
        if (!Name.empty() && std::all_of(Name.begin(), Name.end(), IsDigit)) {
          Group = 0;
          for (WideChar D : Name)
            Group = Group > 100000 ? Group : Group * 10 + (D - u'0');
        } else if (!Name.empty())
          Group = AMatch.GroupNumber(Name);
        if (Group >= 0)
          AResult += AMatch.Group(static_cast<uint32_t>(Group));
        I = Close;
        continue;
      }
    }
    ++I;
    switch (Next) {
    case u'&':
      AResult += AMatch.Group(0);
      break;
    case u'`':
      AResult += AMatch.Subject().substr(0, AMatch.Start());
      break;
    case u'\'':
      AResult += AMatch.Subject().substr(AMatch.End());
      break;
    case u'_':
      AResult += AMatch.Subject();
      break;
    case u'$':
    case u'\\':
      AResult += Next;
      break;
    default:
      AResult += C;
      AResult += Next;
    }
  }
}

} // namespace

TRegEx::TRegEx(std::u16string_view APattern, TRegExOptions AOptions)
    : FCode(ThreadState().Find(APattern, CompileOptions(AOptions))) {}

bool TRegEx::IsMatch(std::u16string_view AInput) const {
  TMatcher Matcher(*FCode, AInput);
  return Matcher.Next(0, false);
}

UnicodeString TRegEx::Replace(std::u16string_view AInput, std::u16string_view AReplacement) const {
  TMatcher Matcher(*FCode, AInput);
  UnicodeString Result;
  size_t Copied = 0;
  size_t Start = 0;
  bool AfterEmpty = false;
  while (Start <= AInput.size()) {
    if (!Matcher.Next(Start, AfterEmpty)) {
      if (!AfterEmpty || Start >= AInput.size())
        break;
      // No non-empty match where the empty one was: search again one character further on.
      Start = Matcher.StepOver(Start);
      AfterEmpty = false;
      continue;
    }
    Result.append(AInput.substr(Copied, Matcher.Start() - Copied));
    AppendReplacement(Matcher, AReplacement, Result);
    Copied = Matcher.End();
    AfterEmpty = Matcher.Start() == Matcher.End();
    Start = Matcher.End();
  }
  Result.append(AInput.substr(std::min(Copied, AInput.size())));
  return Result;
}

std::vector<UnicodeString> TRegEx::Split(std::u16string_view AInput) const {
  std::vector<UnicodeString> Parts;
  if (AInput.empty())
    return Parts;
  TMatcher Matcher(*FCode, AInput, PCRE2_NOTEMPTY);
  size_t From = 0;
  while (From <= AInput.size() && Matcher.Next(From, false)) {
    Parts.emplace_back(AInput.substr(From, Matcher.Start() - From));
    From = Matcher.End();
  }
  Parts.emplace_back(AInput.substr(std::min(From, AInput.size())));
  return Parts;
}

bool TRegEx::IsMatch(std::u16string_view AInput, std::u16string_view APattern,
                     TRegExOptions AOptions) {
  return TRegEx(APattern, AOptions).IsMatch(AInput);
}

UnicodeString TRegEx::Replace(std::u16string_view AInput, std::u16string_view APattern,
                              std::u16string_view AReplacement, TRegExOptions AOptions) {
  return TRegEx(APattern, AOptions).Replace(AInput, AReplacement);
}

std::vector<UnicodeString> TRegEx::Split(std::u16string_view AInput, std::u16string_view APattern,
                                         TRegExOptions AOptions) {
  return TRegEx(APattern, AOptions).Split(AInput);
}

UInt64 TRegEx::CompiledOnThisThread() noexcept { return ThreadState().Compiled; }

} // namespace lorvane
