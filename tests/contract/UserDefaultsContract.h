#pragma once

#include "UserDefaults.h"

#include <gtest/gtest.h>

namespace tessly::test {

/// What every store of settings does. `Subject` has
///   UserDefaults& defaults();
///   void preset(key, text);  // puts a text in behind the store's back
///   void reopen();           // the program starts again
template <typename Subject>
class UserDefaultsContract : public testing::Test
{
protected:
    UserDefaults& defaults() { return m_subject.defaults(); }

    Subject m_subject;
    const QString m_key = QStringLiteral("key");
};

TYPED_TEST_SUITE_P(UserDefaultsContract);

TYPED_TEST_P(UserDefaultsContract, MissingKeysReadAsFallbacks)
{
    EXPECT_EQ(this->defaults().integer(this->m_key), 0);
    EXPECT_FALSE(this->defaults().boolean(this->m_key));
    EXPECT_EQ(this->defaults().string(this->m_key), std::nullopt);
}

TYPED_TEST_P(UserDefaultsContract, RegisteredDefaultsAnswerForKeysThatWereNeverSet)
{
    this->defaults().registerDefaults({
        {QStringLiteral("number"), QVariant::fromValue<qint64>(500)},
        {QStringLiteral("flag"), true},
        {QStringLiteral("text"), QStringLiteral("one\ntwo")},
    });
    EXPECT_EQ(this->defaults().integer(QStringLiteral("number")), 500);
    EXPECT_TRUE(this->defaults().boolean(QStringLiteral("flag")));
    EXPECT_EQ(this->defaults().string(QStringLiteral("text")), QStringLiteral("one\ntwo"));
}

TYPED_TEST_P(UserDefaultsContract, RegisteredDefaultsAreNotStored)
{
    this->defaults().registerDefaults({{this->m_key, true}});
    this->defaults().setInteger(QStringLiteral("other"), 1);
    this->m_subject.reopen();
    EXPECT_FALSE(this->defaults().boolean(this->m_key));
}

TYPED_TEST_P(UserDefaultsContract, StoredValuesGoBeforeRegisteredDefaults)
{
    this->defaults().registerDefaults({{this->m_key, true}});
    this->defaults().setBoolean(this->m_key, false);
    EXPECT_FALSE(this->defaults().boolean(this->m_key));
}

TYPED_TEST_P(UserDefaultsContract, RemovedKeysAnswerTheirRegisteredDefaultAgain)
{
    this->defaults().registerDefaults({{this->m_key, QStringLiteral("registered")}});
    this->defaults().setString(this->m_key, QStringLiteral("stored"));
    this->defaults().remove(this->m_key);
    EXPECT_EQ(this->defaults().string(this->m_key), QStringLiteral("registered"));
    this->m_subject.reopen();
    EXPECT_EQ(this->defaults().string(this->m_key), std::nullopt);
}

TYPED_TEST_P(UserDefaultsContract, ValuesOutliveTheProgram)
{
    const QString text = QStringLiteral(" one\ntwo\r\n\ttab \"quoted\" back\\slash; a=b, ü 🙂 ");
    this->defaults().setInteger(QStringLiteral("number"), -9'007'199'254'740'993);
    this->defaults().setBoolean(QStringLiteral("on"), true);
    this->defaults().setBoolean(QStringLiteral("off"), false);
    this->defaults().setString(QStringLiteral("text"), text);
    this->defaults().setString(QStringLiteral("empty"), QString());
    this->m_subject.reopen();
    this->defaults().registerDefaults({{QStringLiteral("off"), true}});
    EXPECT_EQ(this->defaults().integer(QStringLiteral("number")), -9'007'199'254'740'993);
    EXPECT_TRUE(this->defaults().boolean(QStringLiteral("on")));
    EXPECT_FALSE(this->defaults().boolean(QStringLiteral("off")));
    EXPECT_EQ(this->defaults().string(QStringLiteral("text")), text);
    EXPECT_EQ(this->defaults().string(QStringLiteral("empty")), QString());
}

TYPED_TEST_P(UserDefaultsContract, AValueThatIsNoWholeNumberReadsAsZero)
{
    for (const char* text : {"many", "", "1.5", "99999999999999999999", "12 apples", "true"}) {
        this->m_subject.preset(this->m_key, QString::fromLatin1(text));
        EXPECT_EQ(this->defaults().integer(this->m_key), 0) << text;
    }
}

TYPED_TEST_P(UserDefaultsContract, TrueAndNumbersOtherThanZeroReadAsTrue)
{
    for (const char* text : {"true", "True", "1", "-3", "0.5"}) {
        this->m_subject.preset(this->m_key, QString::fromLatin1(text));
        EXPECT_TRUE(this->defaults().boolean(this->m_key)) << text;
    }
    for (const char* text : {"false", "0", "0.0", "", "perhaps"}) {
        this->m_subject.preset(this->m_key, QString::fromLatin1(text));
        EXPECT_FALSE(this->defaults().boolean(this->m_key)) << text;
    }
}

REGISTER_TYPED_TEST_SUITE_P(
    UserDefaultsContract, MissingKeysReadAsFallbacks,
    RegisteredDefaultsAnswerForKeysThatWereNeverSet, RegisteredDefaultsAreNotStored,
    StoredValuesGoBeforeRegisteredDefaults, RemovedKeysAnswerTheirRegisteredDefaultAgain,
    ValuesOutliveTheProgram, AValueThatIsNoWholeNumberReadsAsZero,
    TrueAndNumbersOtherThanZeroReadAsTrue);

} // namespace tessly::test
