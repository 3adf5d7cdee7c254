#include "common/KSLTypes.h"

#include <gtest/gtest.h>

#include "LinkTestSupport.h"

TEST(KSLTypes, AnErrorKeepsACopyOfItsDescription) {
  std::string text = "gone";
  const KSLError error(static_cast<ErrorTypes>(1), text);
  text = "changed";
  EXPECT_EQ(1, error.errorCode);
  EXPECT_EQ("gone", *error.errorDescription);
}

TEST(KSLTypes, TheNullCallIsNoCall) {
  EXPECT_EQ(M_NULL, NULL_CALL.methodID);
  EXPECT_EQ(0, NULL_CALL.priority);
  EXPECT_EQ(nullptr, NULL_CALL.parameters);
  EXPECT_EQ(0, NULL_CALL.sendingAttempts);
  EXPECT_FALSE(NULL_CALL.callback);
  EXPECT_EQ(0U, NULL_CALL.requestUID);
}

TEST(KSLTypes, AListenerForwardsCodeAndTextOfAnError) {
  linktest::NotingListener listener;
  EXPECT_EQ(0, listener.handleError(M_VOLUME, static_cast<KSLError*>(nullptr)));
  EXPECT_TRUE(listener.errors.empty());
  KSLError error(E_SERVER_FULL, "full");
  listener.handleError(M_VOLUME, &error);
  EXPECT_EQ((std::vector<linktest::Note>{{M_VOLUME, E_SERVER_FULL, "full"}}), listener.errors);
}

TEST(KSLTypes, AListenerThatOverridesNothingAnswersWithTheDefaults) {
  class Mute : public TKSLListener {
   public:
    using TKSLListener::handleError;
    int handleError(MethodType, ErrorTypes, const std::string&) override { return 5; }
  };
  Mute listener;
  EXPECT_EQ(-1, listener.getIDFromInitData(nullptr));
  EXPECT_EQ(0, listener.handleInitResponse(E_NO_ERROR, nullptr));
  EXPECT_EQ(0, listener.handlePlatformEvent(Event(1, "n")));
  KSLError error(E_DUPLICATE, "");
  EXPECT_EQ(5, listener.handleError(M_BYE, &error));
}
