// Creates program shortcuts in the Start menu.
#include "system/short_cut.h"

#include <string>

#include "frame/os_identity.h"
#include "platform/owned.h"

namespace pikel {
namespace {

bool Succeeded(HRESULT hr) {
    return hr >= 0;
}

using ShellLink = ComPointer<IShellLinkA>;
using PersistFile = ComPointer<IPersistFile>;

bool CreateLink(ShellLink& link) {
    void* pLink = nullptr;
    const bool bCreated = Succeeded(Platform().CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER,
                                                                IID_IShellLinkA, &pLink)) &&
                          pLink != nullptr;
    if (bCreated) {
        link.Reset(static_cast<IShellLinkA*>(pLink));
    }
    return bCreated;
}

/// A link without one of its properties is better than none: their outcomes are not looked at.
void Describe(IShellLinkA& link, const ShortcutRecord& record) {
    link.SetPath(record.TargetPath);
    if (record.Description != nullptr) {
        link.SetDescription(record.Description);
    }
    if (record.WorkingDirectory != nullptr) {
        link.SetWorkingDirectory(record.WorkingDirectory);
    }
    if (record.Arguments != nullptr) {
        link.SetArguments(record.Arguments);
    }
    if (record.IconPath != nullptr && record.IconIndex != 0) {
        link.SetIconLocation(record.IconPath, record.IconIndex);
    }
}

bool Save(IPersistFile& file, LPCSTR lpszPath) {
    WCHAR szPath[MAX_PATH] = {};
    return Platform().MultiByteToWideChar(CP_ACP, 0, lpszPath, -1, szPath, MAX_PATH) != 0 &&
           Succeeded(file.Save(szPath, TRUE));
}

bool DescribeAndSave(IShellLinkA& link, const ShortcutRecord& record) {
    void* pFile = nullptr;
    if (!Succeeded(link.QueryInterface(IID_IPersistFile, &pFile)) || pFile == nullptr) {
        return false;
    }
    PersistFile file(static_cast<IPersistFile*>(pFile));
    Describe(link, record);
    return Save(*file.Get(), record.LinkPath);
}

/// The folder of the Start menu's programs; empty when it isn't known.
std::string ProgramsFolder() {
    LookedUp<looked_up::SHGetFolderPathA> getFolderPath("shfolder.dll", "SHGetFolderPathA");
    if (!getFolderPath) {
        return {};
    }
    const bool b9x = HasOsClass(OsClass9xFamily);
    char szFolder[MAX_PATH] = "";
    const HRESULT hr = getFolderPath.Call()(nullptr, static_cast<int>(b9x ? CSIDL_PROGRAMS : CSIDL_COMMON_PROGRAMS),
                                            nullptr, 0, szFolder);
    return Succeeded(hr) ? szFolder : "";
}

}  // namespace

DWORD WriteShortcut(const ShortcutRecord* pRecord) {
    if (pRecord == nullptr || pRecord->LinkPath == nullptr || pRecord->TargetPath == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    ThreadCom com;  // outlives the link
    ShellLink link;
    if (!CreateLink(link)) {  // the thread turns out to lack COM, or the link can't be had at all
        com.Reset(Succeeded(Platform().CoInitialize(nullptr)));
        if (com) {
            CreateLink(link);
        }
    }
    return link && DescribeAndSave(*link.Get(), *pRecord) ? ERROR_SUCCESS : ERROR_INTERNAL_ERROR;
}

DWORD DoCreateShortCut(LPCSTR lpszFolderName, LPCSTR lpszLinkName, LPCSTR lpszTargetPath, LPCSTR lpszWorkingDirectory) {
    if (lpszFolderName == nullptr || lpszLinkName == nullptr || lpszTargetPath == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    std::string strPath = ProgramsFolder();
    if (strPath.empty()) {
        return ERROR_INTERNAL_ERROR;
    }
    strPath.append("\\").append(lpszFolderName);
    Platform().CreateDirectoryA(strPath.c_str(), nullptr);  // the folder may exist; the link's file tells the rest
    strPath.append("\\").append(lpszLinkName);
    ShortcutRecord record{};
    record.LinkPath = strPath.c_str();
    record.TargetPath = lpszTargetPath;
    record.WorkingDirectory = lpszWorkingDirectory;
    return WriteShortcut(&record);
}

}  // namespace pikel
