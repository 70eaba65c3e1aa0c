// GoogleTest takes its Notification from std::mutex, which the compiler's thread model lacks. This one stands in for it
// when GoogleTest is built for Windows; nothing in the tests waits on it.
#pragma once

#ifdef __cplusplus
#include <windows.h>

namespace testing::internal {

class Notification {
  public:
    Notification() : m_event(CreateEventA(nullptr, TRUE, FALSE, nullptr)) {}
    ~Notification() { CloseHandle(m_event); }
    Notification(const Notification&) = delete;
    Notification& operator=(const Notification&) = delete;

    void Notify() { SetEvent(m_event); }
    void WaitForNotification() { WaitForSingleObject(m_event, INFINITE); }

  private:
    HANDLE m_event;
};

}  // namespace testing::internal
#endif
