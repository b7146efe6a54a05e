#include "automation/error.h"

#include <new>
#include <stdexcept>
#include <string>
#include <thread>

#include <gtest/gtest.h>

namespace talvex::automation {
namespace {

ErrorState Numbered(std::int32_t number) { return {number, "source", "description", "help", number + 1}; }

template <class Exception>
ErrorState StateOf(const Exception& thrown) {
  try {
    throw thrown;
  } catch (...) {
    return CurrentExceptionState();
  }
}

TEST(AutomationError, CarriesEveryPartOfItsState) {
  const Error whole(ErrorState{13, "Talvex.X", "Type mismatch", "talvex.chm", 7});
  EXPECT_EQ(whole.Number(), 13);
  EXPECT_EQ(whole.Source(), "Talvex.X");
  EXPECT_EQ(whole.Description(), "Type mismatch");
  EXPECT_STREQ(whole.what(), "Type mismatch");
  EXPECT_EQ(whole.State().help_file, "talvex.chm");
  EXPECT_EQ(whole.State().help_context, 7);

  const Error brief(5, "Talvex.Y", "Invalid");
  EXPECT_EQ(brief.State().number, 5);
  EXPECT_EQ(brief.State().source, "Talvex.Y");
  EXPECT_EQ(brief.State().description, "Invalid");
  EXPECT_EQ(brief.State().help_file, "");
  EXPECT_EQ(brief.State().help_context, 0);
}

TEST(AutomationError, NumbersAreThoseThatCallersKnow) {
  namespace n = error_number;
  const std::pair<std::int32_t, std::int32_t> rows[] = {
      {n::kInvalidCall, 5},           {n::kOverflow, 6},
      {n::kSubscriptOutOfRange, 9},   {n::kTypeMismatch, 13},
      {n::kOutOfStackSpace, 28},      {n::kInvalidUseOfNull, 94},
      {n::kCannotCreateObject, 429},  {n::kNoSuchMember, 438},
      {n::kArgumentNotOptional, 449}, {n::kWrongNumberOfArguments, 450},
      {n::kDuplicateKey, 457},        {n::kNoCurrentRow, 3021},
      {n::kNoSuchColumn, 3265},       {n::kObjectIsClosed, 3704},
      {n::kRowChanged, -2147217864},  {n::kValueTooLongOrWrongType, -2147217887},
      {n::kConstraint, -2147217873},  {n::kStatementRefused, -2147217900}};
  for (const auto& [named, number] : rows) EXPECT_EQ(named, number);
}

TEST(PendingError, IsNoneOutsideAHandler) {
  EXPECT_EQ(PendingError().number, 0);
  EXPECT_EQ(PendingError().description, "");
}

TEST(PendingError, ScopesNestAndGiveBackTheOneBefore) {
  {
    const PendingErrorScope outer(Numbered(1));
    EXPECT_EQ(PendingError().number, 1);
    EXPECT_EQ(PendingError().source, "source");
    EXPECT_EQ(PendingError().description, "description");
    EXPECT_EQ(PendingError().help_file, "help");
    EXPECT_EQ(PendingError().help_context, 2);
    {
      const PendingErrorScope inner(Numbered(2));
      EXPECT_EQ(PendingError().number, 2);
      PendingError().number = 3;  // A handler may change what is pending; the outer one does not see it.
    }
    EXPECT_EQ(PendingError().number, 1);
    EXPECT_EQ(PendingError().description, "description");
  }
  EXPECT_EQ(PendingError().number, 0);
  EXPECT_EQ(PendingError().source, "");
}

TEST(PendingError, ScopeThatIsLeftByAnExceptionGivesBackTheOneBefore) {
  const PendingErrorScope outer(Numbered(1));
  try {
    const PendingErrorScope inner(Numbered(2));
    throw std::runtime_error("out");
  } catch (const std::runtime_error&) {
    EXPECT_EQ(PendingError().number, 1);
  }
}

TEST(PendingError, BelongsToItsThread) {
  const PendingErrorScope here(Numbered(1));
  std::int32_t seen_there = -1;
  std::thread([&] {
    seen_there = PendingError().number;
    PendingError().number = 99;
  }).join();
  EXPECT_EQ(seen_there, 0);
  EXPECT_EQ(PendingError().number, 1);
}

TEST(CurrentExceptionState, KeepsTheStateOfAnError) {
  const ErrorState state = StateOf(Error(Numbered(457)));
  EXPECT_EQ(state.number, 457);
  EXPECT_EQ(state.source, "source");
  EXPECT_EQ(state.description, "description");
  EXPECT_EQ(state.help_file, "help");
  EXPECT_EQ(state.help_context, 458);
}

TEST(CurrentExceptionState, TurnsForeignExceptionsIntoNumbersThatCallersKnow) {
  const ErrorState memory = StateOf(std::bad_alloc());
  EXPECT_EQ(memory.number, 7);
  EXPECT_EQ(memory.source, "Talvex");
  EXPECT_EQ(memory.description, "Out of memory");

  const ErrorState standard = StateOf(std::out_of_range("no such place"));
  EXPECT_EQ(standard.number, 51);
  EXPECT_EQ(standard.source, "Talvex");
  EXPECT_EQ(standard.description, "Internal error: no such place");

  const ErrorState other = StateOf(42);
  EXPECT_EQ(other.number, 51);
  EXPECT_EQ(other.source, "Talvex");
  EXPECT_EQ(other.description, "Internal error");
}

TEST(CurrentExceptionState, LeavesTheExceptionToItsHandler) {
  try {
    throw Error(Numbered(5));
  } catch (const Error& error) {
    EXPECT_EQ(CurrentExceptionState().number, 5);
    EXPECT_EQ(error.Description(), "description");
    EXPECT_EQ(CurrentExceptionState().number, 5);
  }
}

}  // namespace
}  // namespace talvex::automation
