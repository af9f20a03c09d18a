// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// An application that runs one command line, for tests that end the application. HOST WITH|WITHOUT FOLDER
// PROGRAMS LINE.
#include <string_view>

#include "app/runtime/process/ConfinedProcess.h"
#include "app/runtime/process/Mechanisms.h"

int main(int count, char** words) {
    using namespace sorakaze::process;
    if (count != 5) return 2;
    if (std::string_view(words[1]) == "WITHOUT") {
        Mechanisms most = AvailableMechanisms();
        most.namespaces = false;
        LimitMechanisms(most);
    }
    Confinement confinement;
    confinement.writableFolder = words[2];
    confinement.searchFirst = {words[3]};
    return ConfinedProcess(words[4], confinement).Run().status;
}
