#include "automation/dictionary.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/error_of.h"

namespace talvex::automation {
namespace {

using test::ErrorNumberOf;
using test::ErrorOf;

std::vector<Variant> Texts(const std::vector<std::string>& texts) { return {texts.begin(), texts.end()}; }

TEST(Dictionary, KeysAreExact) {
  Dictionary dictionary;
  for (const char* key : {"a", "A", "", " a", "ä", "Ä"}) dictionary.Add(key, key);
  EXPECT_EQ(dictionary.Count(), 6);
  EXPECT_EQ(dictionary.Item("A"), Variant("A"));
  EXPECT_EQ(dictionary.Item(""), Variant(""));
  EXPECT_TRUE(dictionary.Exists(" a"));
  EXPECT_FALSE(dictionary.Exists("a "));
}

TEST(Dictionary, KeyThatIsThereAlreadyRaises457AndChangesNothing) {
  Dictionary dictionary;
  dictionary.Add("key", 1);
  const ErrorState error = ErrorOf([&] { dictionary.Add("key", 2); });
  EXPECT_EQ(error.number, 457);
  EXPECT_NE(error.description.find("'key'"), std::string::npos) << error.description;
  EXPECT_EQ(dictionary.Item("key"), Variant(1));
  EXPECT_EQ(dictionary.Count(), 1);
}

TEST(Dictionary, ItemOfAKeyThatIsNotThereIsEmptyAndAddsNothing) {
  Dictionary dictionary;
  EXPECT_TRUE(dictionary.Item("none").IsEmpty());
  EXPECT_FALSE(dictionary.Exists("none"));
  EXPECT_EQ(dictionary.Count(), 0);
}

TEST(Dictionary, SetItemReplacesInPlaceOrAddsAtTheEnd) {
  Dictionary dictionary;
  dictionary.Add("a", 1);
  dictionary.Add("b", 2);
  dictionary.SetItem("a", "one");
  dictionary.SetItem("c", 3);
  EXPECT_EQ(dictionary.Keys().Items(), Texts({"a", "b", "c"}));
  EXPECT_EQ(dictionary.Items().Items(), (std::vector<Variant>{"one", 2, 3}));
}

TEST(Dictionary, RemovingAKeyThatIsNotThereRaises5) {
  Dictionary dictionary;
  dictionary.Add("a", 1);
  const ErrorState error = ErrorOf([&] { dictionary.Remove("A"); });
  EXPECT_EQ(error.number, 5);
  EXPECT_NE(error.description.find("'A'"), std::string::npos) << error.description;
  EXPECT_EQ(dictionary.Count(), 1);
}

TEST(Dictionary, RemovesEverything) {
  Dictionary dictionary;
  dictionary.Add("a", 1);
  dictionary.Add("b", 2);
  dictionary.RemoveAll();
  EXPECT_EQ(dictionary.Count(), 0);
  EXPECT_EQ(dictionary.Keys(), Array());
  EXPECT_EQ(dictionary.Items(), Array());
  dictionary.Add("b", 3);
  EXPECT_EQ(dictionary.Item("b"), Variant(3));
}

TEST(Dictionary, AKeyMayBeRemovedByItsOwnText) {
  Dictionary dictionary;
  dictionary.Add("first key that is long enough to be kept apart", 1);
  dictionary.Add("second", 2);
  dictionary.Remove(dictionary.Entries().front().first);
  EXPECT_EQ(dictionary.Keys().Items(), Texts({"second"}));
}

TEST(Dictionary, StaysOrderedWhateverIsAddedAndRemoved) {
  std::mt19937 random(5);
  Dictionary dictionary;
  std::vector<std::pair<std::string, Variant>> model;
  for (int step = 0; step < 4000; ++step) {
    const std::string key = "k" + std::to_string(random() % 60);
    const auto found =
        std::find_if(model.begin(), model.end(), [&](const auto& entry) { return entry.first == key; });
    const bool there = found != model.end();
    switch (random() % 3) {
      case 0:
        EXPECT_EQ(ErrorNumberOf([&] { dictionary.Add(key, step); }), there ? 457 : 0);
        if (!there) model.emplace_back(key, step);
        break;
      case 1:
        EXPECT_EQ(ErrorNumberOf([&] { dictionary.Remove(key); }), there ? 0 : 5);
        if (there) model.erase(found);
        break;
      default:
        dictionary.SetItem(key, step);
        there ? static_cast<void>(found->second = step) : static_cast<void>(model.emplace_back(key, step));
    }
    ASSERT_EQ(dictionary.Entries(), model);
    ASSERT_EQ(dictionary.Count(), static_cast<std::int32_t>(model.size()));
    for (const auto& [name, item] : model) ASSERT_EQ(dictionary.Item(name), item);
  }
}

TEST(Dictionary, LongChainOfDictionariesIsDestroyedWithoutStackForEachLevel) {
  const auto chain = [](const ObjectRef& innermost) {
    ObjectRef outer = innermost;
    for (int i = 0; i < 200000; ++i) {
      auto next = std::make_shared<Dictionary>();
      next->Add("inner", outer);
      outer = std::move(next);
    }
    return outer;
  };
  const std::function<void(Dictionary&)> releases[] = {
      [](Dictionary& holder) { holder.Remove("chain"); }, [](Dictionary& holder) { holder.RemoveAll(); },
      [](Dictionary& holder) { holder.SetItem("chain", 1); }};
  for (const auto& release : releases) {
    auto innermost = std::make_shared<Dictionary>();
    const std::weak_ptr<Dictionary> watched = innermost;
    Dictionary holder;
    holder.Add("chain", chain(innermost));
    innermost.reset();
    EXPECT_FALSE(watched.expired());
    release(holder);
    EXPECT_TRUE(watched.expired());
  }
}

TEST(Dictionary, WorksByTheNamesOfItsMembers) {
  const ObjectRef dictionary = std::make_shared<Dictionary>();
  EXPECT_EQ(dictionary->Class().Name(), "Platform.Dictionary");
  dictionary->Call("add", "key", 12.5);
  dictionary->Call("SETITEM", 7, "a number's text is its key");
  EXPECT_EQ(dictionary->Call("Item", "key"), Variant(12.5));
  EXPECT_EQ(dictionary->Call("Exists", "7"), Variant(true));
  EXPECT_EQ(dictionary->Get("count"), Variant(2));
  EXPECT_EQ(dictionary->Call("Keys"), Variant(Array(Texts({"key", "7"}))));
  EXPECT_TRUE(dictionary->Call("Remove", "key").IsEmpty());
  EXPECT_EQ(ErrorNumberOf([&] { dictionary->Set("Count", 3); }), 438);
}

}  // namespace
}  // namespace talvex::automation
