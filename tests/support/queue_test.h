// Fixture for tests of the file queue: files on a machine, an INF made of pieces, and a callback that notes what it is
// told and answers as the test says.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "support/machine_test.h"

namespace pikel::testing_support {

class QueueTest : public MachineTest {
  protected:
    static constexpr char kTarget[] = "C:\\target";
    static constexpr DWORD kUserId = 40000;

    QueueTest() {
        s_test = this;
        WriteFileOn(Machine(), "C:\\source\\a.txt", "aaa");
        WriteFileOn(Machine(), "C:\\source\\b.txt", "bbbb");
        WriteFileOn(Machine(), "C:\\source\\sub\\c.txt", "ccccc");
    }
    ~QueueTest() override { s_test = nullptr; }

    /// Writes C:\source\test.inf and opens it, with id 40000 as C:\target.
    void OpenInf(std::string_view text) {
        m_inf.Reset();
        WriteFileOn(Machine(), "C:\\source\\test.inf", "[Version]\r\nSignature=\"$CHICAGO$\"\r\n" + std::string(text));
        m_inf.Reset(Platform().SetupOpenInfFileA("C:\\source\\test.inf", nullptr, INF_STYLE_WIN4, nullptr));
        ASSERT_TRUE(static_cast<bool>(m_inf));
        ASSERT_TRUE(Platform().SetupSetDirectoryIdA(m_inf.Get(), kUserId, kTarget));
    }

    /// Queues section [I] and commits it. Code() tells the last error then.
    bool Run(DWORD style = 0, const char* root = "C:\\source") {
        m_queue.Reset(Platform().SetupOpenFileQueue());
        EXPECT_TRUE(Platform().SetupInstallFilesFromInfSectionA(m_inf.Get(), nullptr, m_queue.Get(), "I", root, style));
        return Commit();
    }
    bool Commit() {
        m_steps.clear();
        Platform().SetLastError(kUntouched);
        const BOOL result = Platform().SetupCommitFileQueueA(reinterpret_cast<HWND>(0x77), m_queue.Get(),
                                                             m_hasCallback ? &Note : nullptr, &m_steps);
        m_code = Platform().GetLastError();
        return result != FALSE;
    }
    DWORD Code() const { return m_code; }
    const std::vector<std::string>& Steps() const { return m_steps; }

    /// Files in C:\target with their bytes: "name=bytes".
    std::vector<std::string> Targets(std::string_view folder = kTarget) {
        std::vector<std::string> files;
        for (const simulated::FileEntry& entry : Machine().Files().List(folder)) {
            if ((entry.attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
                const std::string path = std::string(folder) + "\\" + entry.name;
                files.push_back(entry.name + "=" + ReadFileOn(Machine(), path));
            }
        }
        return files;
    }

    /// Answer to a notification from now on, or to its nth one alone (from 1).
    void Answer(UINT notification, UINT answer) { m_answers[notification] = answer; }
    void AnswerOnce(UINT notification, int nth, UINT answer) { m_single[{notification, nth}] = answer; }

    static constexpr DWORD kUntouched = 0xbeef;
    bool m_hasCallback = true;
    std::string m_newPath;     ///< put into the buffer when the answer is FILEOP_NEWPATH
    DWORD m_errorOnAbort = 0;  ///< set as the last error when the answer is FILEOP_ABORT
    bool m_clearsErrorOnAbort = false;
    InfHandle m_inf;
    FileQueueHandle m_queue;

  private:
    static UINT CALLBACK Note(PVOID context, UINT notification, UINT_PTR first, UINT_PTR second) {
        EXPECT_EQ(context, &s_test->m_steps);
        return s_test->Take(notification, first, second);
    }
    UINT Take(UINT notification, UINT_PTR first, UINT_PTR second);
    static std::string Describe(UINT notification, UINT_PTR first, UINT_PTR second);

    static inline QueueTest* s_test = nullptr;
    std::vector<std::string> m_steps;
    std::map<UINT, UINT> m_answers;
    std::map<std::pair<UINT, int>, UINT> m_single;
    std::map<UINT, int> m_counts;
    DWORD m_code = 0;
};

/// Lines of [DestinationDirs] that send everything to C:\target.
inline constexpr char kToTarget[] = "[DestinationDirs]\r\nDefaultDestDir=40000\r\n";

}  // namespace pikel::testing_support
