#pragma once
// The application's process-wide objects and its start-up helpers.

#include <string>

class TLenUnit;

// The installed length-unit object; fatal when there is none.
TLenUnit& LenUnit();
// Installs the object the application object created, or removes it (null).
// The caller keeps ownership.
void SetLenUnit(TLenUnit* lenUnit);
// The installed object, or null, for code that checks its presence itself.
TLenUnit* InstalledLenUnit();

// Directory of the executable, separator included: the module file name cut
// behind its last '/', else behind its last '\'; the whole name when it has
// neither. Fatal when the name is empty.
std::wstring ComputeApplicationDirectory();
