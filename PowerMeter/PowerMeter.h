#pragma once
// The process-wide objects the application object owns, reached through
// accessors that are fatal when the object is absent, and the application
// directory.

#include <string>

class CAppConfig;
class COPMDocument;
class CPowerMeterDeviceManager;
class TLenUnit;

// The installed length-unit object; fatal when there is none.
TLenUnit& LenUnit();
// Installs the object the application object created, or removes it (null).
// The caller keeps ownership.
void SetLenUnit(TLenUnit* lenUnit);
// The installed object, or null, for code that checks its presence itself.
TLenUnit* InstalledLenUnit();

// The application object installs what it owns here for the screens, the
// document and the tests to reach; each setter takes null to remove. The
// caller keeps ownership.
//
// The settings store on "Software\Tavix" (application and common settings).
CAppConfig& AppConfig();
void SetAppConfig(CAppConfig* config);
// Fatal ("powerMeterDeviceManager.get()") when there is none.
CPowerMeterDeviceManager& PowerMeterDeviceManager();
CPowerMeterDeviceManager* InstalledDeviceManager();
void SetPowerMeterDeviceManager(CPowerMeterDeviceManager* manager);
// The application's one measurement document.
COPMDocument& OPMDocument();
// The installed document, or null (screens tested without one).
COPMDocument* InstalledOPMDocument();
void SetOPMDocument(COPMDocument* document);

// Directory of the executable, separator included: the module file name cut
// behind its last '/', else behind its last '\'; the whole name when it has
// neither. Fatal when the name is empty.
std::wstring ComputeApplicationDirectory();
