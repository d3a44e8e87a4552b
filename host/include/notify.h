// Host broadcast notifications: handlers register for a code and hear every broadcast of it with a call
// parameter. Dispatch runs in registration order over a snapshot; handlers may register, unregister and
// broadcast while they run, and entries unregistered meanwhile are skipped.
#pragma once

#include "maxtypes.h"

struct NotifyInfo {
    int intcode = 0;
    void* callParam = nullptr;
};
using NOTIFYPROC = void (*)(void* param, NotifyInfo* info);

int RegisterNotification(NOTIFYPROC proc, void* param, int code);
// Answers 0, without failing, when no such registration exists.
int UnRegisterNotification(NOTIFYPROC proc, void* param, int code);
// Removes the registration of proc with param for every code.
int UnRegisterNotification(NOTIFYPROC proc, void* param);
void BroadcastNotification(int code);
void BroadcastNotification(int code, void* callParam);

#define NOTIFY_SYSTEM_PRE_RESET 0x00000005
#define NOTIFY_SYSTEM_POST_RESET 0x00000006
#define NOTIFY_SYSTEM_PRE_NEW 0x00000007
#define NOTIFY_SYSTEM_POST_NEW 0x00000008
#define NOTIFY_FILE_PRE_OPEN 0x00000009
#define NOTIFY_FILE_POST_OPEN 0x0000000A
#define NOTIFY_FILE_PRE_SAVE 0x0000000D
#define NOTIFY_FILE_POST_SAVE 0x0000000E
#define NOTIFY_PRE_RENDER 0x00000014
#define NOTIFY_POST_RENDER 0x00000015
#define NOTIFY_SYSTEM_SHUTDOWN 0x00000049
#define NOTIFY_SYSTEM_STARTUP 0x00000050
#define NOTIFY_FILE_PRE_SAVE_PROCESS 0x000000AE
#define NOTIFY_FILE_POST_MERGE3 0x0000010B

// Call parameter of NOTIFY_FILE_PRE_OPEN / NOTIFY_FILE_POST_OPEN: what kind of file is opened.
enum FileIOType { IOTYPE_MAX = 0, IOTYPE_MATLIB = 1, IOTYPE_RENDER_PRESETS = 2 };
// Call parameter of NOTIFY_FILE_PRE_SAVE_PROCESS.
struct NotifyFileProcess {
    int fileProcessType = 0;
    const MCHAR* fileName = nullptr;
};
