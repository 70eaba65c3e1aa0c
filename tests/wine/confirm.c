/*
 * Says what the system itself knows of a driver and a printer. Uses the system's own calls alone.
 *
 *     confirm DRIVER PRINTER
 *
 * Prints a line for each that is there:
 *     driver NAME | environment | driver file
 *     monitor NAME
 *     printer NAME | driver | port
 *     comment TEXT
 *     location TEXT
 *     value KEY\NAME BYTES    of the values that the tests write
 *     default NAME
 */
#include <windows.h>
#include <winspool.h>

#include <stdio.h>
#include <stdlib.h>

static void ShowDrivers(const char* wanted) {
    DWORD needed = 0, count = 0, i;
    DRIVER_INFO_3A* drivers;
    EnumPrinterDriversA(NULL, NULL, 3, NULL, 0, &needed, &count);
    drivers = calloc(1, needed + 1);
    if (drivers != NULL && EnumPrinterDriversA(NULL, NULL, 3, (LPBYTE)drivers, needed, &needed, &count)) {
        for (i = 0; i < count; ++i) {
            if (lstrcmpiA(drivers[i].pName, wanted) == 0) {
                printf("driver %s | %s | %s\n", drivers[i].pName, drivers[i].pEnvironment, drivers[i].pDriverPath);
            }
        }
    }
    free(drivers);
}

static void ShowMonitors(void) {
    DWORD needed = 0, count = 0, i;
    MONITOR_INFO_2A* monitors;
    EnumMonitorsA(NULL, 2, NULL, 0, &needed, &count);
    monitors = calloc(1, needed + 1);
    if (monitors != NULL && EnumMonitorsA(NULL, 2, (LPBYTE)monitors, needed, &needed, &count)) {
        for (i = 0; i < count; ++i) {
            printf("monitor %s\n", monitors[i].pName);
        }
    }
    free(monitors);
}

static void ShowValue(HANDLE printer, const char* key, const char* name) {
    BYTE bytes[256];
    DWORD type = 0, needed = 0, i;
    if (GetPrinterDataExA(printer, key, name, &type, bytes, sizeof bytes, &needed) == ERROR_SUCCESS) {
        printf("value %s\\%s ", key, name);
        for (i = 0; i < needed; ++i) {
            printf("%02x", bytes[i]);
        }
        printf("\n");
    }
}

static void ShowValues(char* name) {
    HANDLE printer = NULL;
    if (OpenPrinterA(name, &printer, NULL)) {
        ShowValue(printer, "PrinterDriverData", "udpWidth");
        ShowValue(printer, "ICMDATA", "ProfileEnumMode");
        ClosePrinter(printer);
    }
}

static void ShowPrinters(const char* wanted) {
    DWORD needed = 0, count = 0, i;
    PRINTER_INFO_2A* printers;
    EnumPrintersA(PRINTER_ENUM_LOCAL, NULL, 2, NULL, 0, &needed, &count);
    printers = calloc(1, needed + 1);
    if (printers != NULL && EnumPrintersA(PRINTER_ENUM_LOCAL, NULL, 2, (LPBYTE)printers, needed, &needed, &count)) {
        for (i = 0; i < count; ++i) {
            if (lstrcmpiA(printers[i].pPrinterName, wanted) == 0) {
                printf("printer %s | %s | %s\n", printers[i].pPrinterName, printers[i].pDriverName,
                       printers[i].pPortName);
                printf("comment %s\nlocation %s\n", printers[i].pComment ? printers[i].pComment : "",
                       printers[i].pLocation ? printers[i].pLocation : "");
                ShowValues(printers[i].pPrinterName);
            }
        }
    }
    free(printers);
}

int main(int argc, char** argv) {
    char name[260] = "";
    DWORD size = sizeof name;
    if (argc != 3) {
        fprintf(stderr, "usage: confirm DRIVER PRINTER\n");
        return 2;
    }
    ShowDrivers(argv[1]);
    ShowMonitors();
    ShowPrinters(argv[2]);
    if (GetDefaultPrinterA(name, &size)) {
        printf("default %s\n", name);
    }
    return 0;
}
