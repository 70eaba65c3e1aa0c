/*
 * A user of the public header, in the C that is also C++: gets the table, fills a record, calls two operations.
 * The header comes first and twice: it needs nothing in front of it, and doesn't mind being there already.
 */
#include "pikel.h"
#include "pikel.h"

#include <string.h>

PiStatus AddOfficePrinter(PI_KEL_GetInterfaceFunction getInterface, LPSTR printerName, LPSTR driverName,
                          LPSTR portName);

PiStatus AddOfficePrinter(PI_KEL_GetInterfaceFunction getInterface, LPSTR printerName, LPSTR driverName,
                          LPSTR portName) {
    static char processor[] = "WinPrint";
    static char datatype[] = "RAW";
    const PI_KEL_Interface* pikel = getInterface(PIKEL_INTERFACE_VERSION);
    PrinterRecord record;
    AddPrinterOptions options;
    PiStatus status;

    if (pikel == NULL) {
        return PIKEL_PREFIX_PRINTER_ADD;
    }
    memset(&record, 0, sizeof record);
    record.pPrinterName = printerName;
    record.pDriverName = driverName;
    record.pPortName = portName;
    record.pPrintProcessor = processor;
    record.pDatatype = datatype;
    memset(&options, 0, sizeof options);
    status = pikel->PI_KEL_AddPrinter(&record, &options);
    if (status != 0) {
        return status;
    }
    return pikel->PI_KEL_SetDefaultPrinter(printerName);
}
