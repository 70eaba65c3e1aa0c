/*
 * Says what a shortcut holds. Uses the system's own calls alone.
 *
 *     confirm_shell FILE
 *
 * Prints "target PATH" and "directory PATH"; exit code 1 for a file that is no shortcut.
 */
#define COBJMACROS
#include <windows.h>
#include <shlobj.h>

#include <stdio.h>

int main(int argc, char** argv) {
    IShellLinkA* link = NULL;
    IPersistFile* file = NULL;
    WCHAR path[MAX_PATH];
    char text[MAX_PATH];
    if (argc != 2 || MultiByteToWideChar(CP_ACP, 0, argv[1], -1, path, MAX_PATH) == 0) {
        return 2;
    }
    CoInitialize(NULL);
    if (FAILED(CoCreateInstance(&CLSID_ShellLink, NULL, CLSCTX_INPROC_SERVER, &IID_IShellLinkA, (void**)&link)) ||
        FAILED(IShellLinkA_QueryInterface(link, &IID_IPersistFile, (void**)&file)) ||
        FAILED(IPersistFile_Load(file, path, STGM_READ))) {
        return 1;
    }
    if (SUCCEEDED(IShellLinkA_GetPath(link, text, sizeof text, NULL, SLGP_RAWPATH))) {
        printf("target %s\n", text);
    }
    if (SUCCEEDED(IShellLinkA_GetWorkingDirectory(link, text, sizeof text))) {
        printf("directory %s\n", text);
    }
    IPersistFile_Release(file);
    IShellLinkA_Release(link);
    CoUninitialize();
    return 0;
}
