#include "core/app_language.h"

#include <gtest/gtest.h>

namespace nuvrel::core {
namespace {

TEST(AppLanguageDetection, LooksOnlyAtTheFirstPreferredTag) {
    EXPECT_EQ(detectFromSystemLocale({"zh-Hant-TW", "en"}), AppLanguage::zh);
    EXPECT_EQ(detectFromSystemLocale({"en-KR", "ko"}), AppLanguage::en);
    EXPECT_EQ(detectFromSystemLocale({"de-DE", "ko-KR"}), AppLanguage::en);
    EXPECT_EQ(detectFromSystemLocale({"ko-KR"}), AppLanguage::ko);
    EXPECT_EQ(detectFromSystemLocale({"ko"}), AppLanguage::ko);
    EXPECT_EQ(detectFromSystemLocale({"ja-JP", "zh-Hans"}), AppLanguage::ja);
    EXPECT_EQ(detectFromSystemLocale({"zh-Hans-CN"}), AppLanguage::zh);
    EXPECT_EQ(detectFromSystemLocale({"fr"}), AppLanguage::en);
    EXPECT_EQ(detectFromSystemLocale({""}), AppLanguage::en);
    EXPECT_EQ(detectFromSystemLocale({}), AppLanguage::en);
}

}  // namespace
}  // namespace nuvrel::core
