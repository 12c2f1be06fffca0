// The card-information form: on loading it shows its one message and closes, so the
// optician sees the message box alone.
#include "exchange/echange.h"
#include "exchange/run.h"
#include "scan/scan.h"

namespace sv140 {

namespace {

Statut Infos_SV(Run& run) {
    run.ui->MsgBox("INFOSSV");
    return {};
}

}  // namespace

std::span<const Operation> Operations_Scan() {
    static const Operation operations[] = {
        {"f_infosSV", Infos_SV, Suite::Verifier, Rien},
    };
    return operations;
}

}  // namespace sv140
