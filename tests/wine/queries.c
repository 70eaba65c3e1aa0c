/*
 * Prints everything that the reading operations of the table say of INFs, for every version and architecture, so that
 * the answers of two builds of the library can be compared line by line.
 *
 *     queries LIBRARY FILE...
 *
 * A file is an INF, or a program file (.dll) of which the version is asked.
 * Paths are printed in lower case: systems spell their folders differently.
 */
#include <ctype.h>
#include <stdio.h>
#include <string.h>

#include "pikel.h"

#ifndef _WIN32
#include <dlfcn.h>
#endif

static const PI_KEL_Interface* Load(const char* path) {
    PI_KEL_GetInterfaceFunction getInterface = NULL;
#ifdef _WIN32
    HMODULE module = LoadLibraryA(path);
    FARPROC found = module == NULL ? NULL : GetProcAddress(module, "PI_KEL_GetInterface");
#else
    void* module = dlopen(path, RTLD_NOW);
    void* found = module == NULL ? NULL : dlsym(module, "PI_KEL_GetInterface");
#endif
    if (found != NULL) {
        memcpy(&getInterface, &found, sizeof getInterface);
    }
    return getInterface == NULL ? NULL : getInterface(PIKEL_INTERFACE_VERSION);
}

/* ---- printing ---------------------------------------------------------------------------------------------------- */

static char g_place[400]; /* INF, version, architecture and model that the lines speak of */

static void PrintStatus(const char* what, PiStatus status) {
    printf("%s %s 0x%08lx\n", g_place, what, (unsigned long)status);
}

static void PrintText(const char* what, const char* text) {
    printf("%s   %s ", g_place, what);
    for (; text != NULL && *text != '\0'; ++text) {
        putchar(tolower((unsigned char)*text));
    }
    printf(text == NULL ? "(null)\n" : "\n");
}

static void PrintNumber(const char* what, unsigned long number) {
    printf("%s   %s %lu\n", g_place, what, number);
}

/* ---- one INF ----------------------------------------------------------------------------------------------------- */

static void AskInf(const PI_KEL_Interface* table, const char* inf) {
    static char text[4096];
    static char comment[4096];
    DWORD number = 0;
    PiStatus status = table->PI_KEL_GetInfOsVersion(inf, &number);
    PrintStatus("GetInfOsVersion", status);
    PrintNumber("architecture", number);
    PrintNumber("valid", table->PI_KEL_IsValidInfFile(inf, NULL, NULL));
    PrintNumber("valid printer", table->PI_KEL_IsValidInfFile(inf, NULL, "PRINTER"));
    PrintNumber("valid maker", table->PI_KEL_IsValidInfFile(inf, "Northlight", NULL));
    number = 0;
    text[0] = comment[0] = '\0';
    PrintStatus("GetCustomizeInfo", table->PI_KEL_GetCustomizeInfo(inf, &number, text, comment));
    PrintNumber("customised", number);
    PrintText("code", text);
    PrintText("comment", comment);
    number = 0;
    text[0] = '\0';
    PrintStatus("GetCATFileInfo", table->PI_KEL_GetCATFileInfo(inf, &number, text));
    PrintNumber("catalog", number);
    PrintText("file", text);
}

/* ---- one program file -------------------------------------------------------------------------------------------- */

static int IsProgram(const char* path) {
    const size_t length = strlen(path);
    return length > 4 && strcmp(path + length - 4, ".dll") == 0;
}

static void AskVersion(const PI_KEL_Interface* table, const char* path) {
    static const char* versions[] = {"0.9", "1.0", "1", "1.00.7", "1.1", "2", "", "none"};
    char text[64] = "";
    size_t i;
    PrintStatus("GetDriverFileVersion", table->PI_KEL_GetDriverFileVersion(path, text, sizeof text));
    PrintText("version", text);
    for (i = 0; i < sizeof versions / sizeof *versions; ++i) {
        PrintNumber(versions[i], table->PI_KEL_CheckDriverFileVersion(path, versions[i], NULL, 0));
    }
}

/* ---- one model --------------------------------------------------------------------------------------------------- */

static void PrintRecord(const DriverAddRecord* record) {
    const DRIVER_INFO_6A* driver = &record->DriverInfo;
    const char* file;
    DWORD i;
    PrintNumber("cVersion", driver->cVersion);
    PrintText("environment", driver->pEnvironment);
    PrintText("driver", driver->pDriverPath);
    PrintText("data", driver->pDataFile);
    PrintText("config", driver->pConfigFile);
    PrintText("help", driver->pHelpFile);
    for (file = driver->pDependentFiles; file != NULL && *file != '\0'; file += strlen(file) + 1) {
        PrintText("dependent", file);
    }
    PrintText("monitor", driver->pMonitorName);
    PrintText("data type", driver->pDefaultDataType);
    PrintNumber("date low", driver->ftDriverDate.dwLowDateTime);
    PrintNumber("date high", driver->ftDriverDate.dwHighDateTime);
    PrintNumber("version low", (unsigned long)(driver->dwlDriverVersion & 0xFFFFFFFFu));
    PrintNumber("version high", (unsigned long)(driver->dwlDriverVersion >> 32));
    PrintText("maker", driver->pszMfgName);
    PrintText("url", driver->pszOEMUrl);
    PrintText("hardware id", driver->pszHardwareID);
    PrintText("provider", driver->pszProvider);
    PrintText("monitor file", record->MonitorInfo.pDLLName);
    for (i = 0; i < record->ColorProfileCount; ++i) {
        PrintText("profile", record->ColorProfileList[i]);
    }
    PrintNumber("not selected", record->NotSelectedTimeout);
    PrintNumber("retry", record->RetryTimeout);
}

typedef struct Target {
    DWORD architecture;
    DWORD major;
    DWORD minor;
} Target;

static void AskModel(const PI_KEL_Interface* table, const char* inf, const char* model, Target target) {
    DriverAddRecord* record = NULL;
    DriverFileRecord* files = NULL;
    DWORD count = 0, i, want;
    PiStatus status = table->PI_KEL_GetInfInfo(inf, model, target.architecture, target.major, target.minor, &record);
    PrintStatus("GetInfInfo", status);
    if (status == 0) {
        PrintRecord(record);
    }
    table->PI_KEL_FreeMemory(record);
    for (want = 0; want < 2; ++want) {
        char name[300] = "";
        DWORD size = sizeof name;
        PrintStatus("GetDriverFileNameFromInf",
                    table->PI_KEL_GetDriverFileNameFromInf(inf, model, target.architecture, target.major, target.minor,
                                                           want, name, &size));
        PrintText("name", name);
    }
    PrintStatus("EnumDriverFiles", table->PI_KEL_EnumDriverFiles(inf, model, target.architecture, target.major,
                                                                 target.minor, &files, &count));
    for (i = 0; i < count; ++i) {
        PrintNumber("kind", files[i].dwKind);
        PrintText("file", files[i].lpszName);
    }
    table->PI_KEL_FreeMemory(files);
}

/* ---- one system -------------------------------------------------------------------------------------------------- */

static void AskSizes(const PI_KEL_Interface* table, const char* inf, LPSTR* models, DWORD count, Target target) {
    static char names[60000];
    DWORD total = 0, shared = 0, i;
    size_t used = 0;
    for (i = 0; i < count && used + strlen(models[i]) + 2 < sizeof names; ++i) {
        strcpy(names + used, models[i]);
        used += strlen(models[i]) + 1;
    }
    names[used] = '\0';
    PrintStatus("GetCopyDriverFilesSize",
                table->PI_KEL_GetCopyDriverFilesSize(inf, names, &total, &shared, 3, target.architecture, target.major,
                                                     target.minor));
    PrintNumber("total", total);
    PrintNumber("shared", shared);
}

static void AskSystem(const PI_KEL_Interface* table, const char* inf, const char* name, Target target) {
    LPSTR* models = NULL;
    DWORD count = 0, i;
    sprintf(g_place, "%s %lu.%lu/%lu", name, (unsigned long)target.major, (unsigned long)target.minor,
            (unsigned long)target.architecture);
    PrintStatus("GetDriverListFromInf", table->PI_KEL_GetDriverListFromInf(inf, target.architecture, target.major,
                                                                           target.minor, &models, &count));
    for (i = 0; i < count; ++i) {
        PrintText("model", models[i]);
    }
    /* A few models say it all; large INFs would take hours. */
    for (i = 0; i < count && i < 3; ++i) {
        sprintf(g_place, "%s %lu.%lu/%lu %.200s", name, (unsigned long)target.major, (unsigned long)target.minor,
                (unsigned long)target.architecture, models[i]);
        AskModel(table, inf, models[i], target);
    }
    sprintf(g_place, "%s %lu.%lu/%lu", name, (unsigned long)target.major, (unsigned long)target.minor,
            (unsigned long)target.architecture);
    AskModel(table, inf, "No Such Model", target);
    AskSizes(table, inf, models, count < 20 ? count : 20, target);
    table->PI_KEL_FreeMemory(models);
}

int main(int argc, char** argv) {
    static const DWORD versions[][2] = {{4, 0}, {5, 0}, {5, 1}, {5, 2}, {6, 0}, {6, 1}, {10, 0}};
    const PI_KEL_Interface* table;
    int i;
    size_t version;
    if (argc < 3) {
        fprintf(stderr, "usage: queries LIBRARY FILE...\n");
        return 2;
    }
    table = Load(argv[1]);
    if (table == NULL) {
        fprintf(stderr, "queries: %s can't be loaded\n", argv[1]);
        return 1;
    }
    table->PI_KEL_Initialize();
    for (i = 2; i < argc; ++i) {
        const char* name = strrchr(argv[i], '\\') == NULL ? argv[i] : strrchr(argv[i], '\\') + 1;
        sprintf(g_place, "%.200s", name);
        if (IsProgram(argv[i])) {
            AskVersion(table, argv[i]);
            continue;
        }
        AskInf(table, argv[i]);
        for (version = 0; version < sizeof versions / sizeof *versions; ++version) {
            Target target = {1, versions[version][0], versions[version][1]};
            for (; target.architecture <= 5; ++target.architecture) {
                AskSystem(table, argv[i], name, target);
            }
        }
    }
    table->PI_KEL_Shutdown();
    return 0;
}
