#include "settings/settings_fields.h"

#include <gtest/gtest.h>

namespace marrowbench {
namespace {

TEST(SettingsFields, AreFourteenWithNamesOfTheirOwn) {
  for (const SettingsField& field : kSettingsFields) {
    std::size_t count = 0;
    for (const SettingsField& other : kSettingsFields) count += field.name == other.name ? 1 : 0;
    EXPECT_EQ(count, 1U) << field.name;
  }
  EXPECT_EQ(kSettingsFields.size(), 14U);
}

TEST(FieldReader, TellsTextAndPlaceOfEachField) {
  FieldReader fields(u"posix; flush ;;  ;\t4");
  const struct {
    const char16_t* text;
    std::size_t position;
    bool isOmitted;
  } expected[] = {{u"posix", 0, false}, {u"flush", 7, false}, {u";", 14, true}, {u"", 17, false},
                  {u"4", 19, false},    {u"", 20, false},     {u"", 20, false}};
  for (const auto& e : expected) {
    const FieldText field = fields.next();
    EXPECT_EQ(field.text.view(), e.text) << e.position;
    EXPECT_EQ(field.position, e.position);
    EXPECT_EQ(field.isOmitted, e.isOmitted) << e.position;
  }
}

TEST(FieldReader, KeepsReadingASeparatorAtTheEndAsAnEmptyLastField) {
  FieldReader fields(u"a;");
  (void)fields.next();
  const FieldText last = fields.next();
  EXPECT_TRUE(last.text.isEmpty());
  EXPECT_EQ(last.position, 2U);
  EXPECT_FALSE(last.isOmitted);
}

}  // namespace
}  // namespace marrowbench
