// Broadcast notifications: order, call parameters, and registration changes during dispatch.
#include "max.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::vector<std::string> calls;
constexpr int kCode = 0xDFA4;
constexpr int kOther = 0xDFA5;

void first(void* p, NotifyInfo* info) {
    calls.push_back("first:" + std::to_string(info->intcode) + ":" + (info->callParam ? *static_cast<std::string*>(info->callParam) : ""));
}
void second(void*, NotifyInfo*) {
    calls.push_back("second");
    UnRegisterNotification(second, nullptr, kCode);  // a one-time handler
}
void third(void*, NotifyInfo*) { calls.push_back("third"); }
void remover(void*, NotifyInfo*) {
    calls.push_back("remover");
    UnRegisterNotification(third, nullptr, kCode);  // unregisters a later handler during dispatch
    RegisterNotification(first, nullptr, kOther);   // registers during dispatch
    BroadcastNotification(kOther);                  // nested broadcast
}

}  // namespace

TEST(Notifications, DispatchInOrderWithChangesDuringDispatch) {
    calls.clear();
    std::string param = "file.max";
    RegisterNotification(remover, nullptr, kCode);
    RegisterNotification(second, nullptr, kCode);
    RegisterNotification(third, nullptr, kCode);
    RegisterNotification(first, nullptr, kCode);
    RegisterNotification(first, nullptr, kCode);  // the same registration twice counts once

    BroadcastNotification(kCode, &param);
    EXPECT_EQ(calls, (std::vector<std::string>{"remover", "first:" + std::to_string(kOther) + ":", "second",
                                               "first:" + std::to_string(kCode) + ":file.max"}));
    calls.clear();
    BroadcastNotification(kCode, &param);
    EXPECT_EQ(calls.size(), 3u);  // remover, nested first, first: second and third are gone

    EXPECT_EQ(UnRegisterNotification(third, nullptr, kCode), 0);  // unknown registration: answers 0
    EXPECT_EQ(UnRegisterNotification(first, nullptr), 1);         // every code at once
    UnRegisterNotification(remover, nullptr, kCode);
    calls.clear();
    BroadcastNotification(kCode);
    BroadcastNotification(kOther);
    EXPECT_TRUE(calls.empty());
}
