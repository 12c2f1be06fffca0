// The library's one exported entry point.
#include "sim/module.h"
#include "platform/intergiciel.h"
#include "platform/systeme.h"
#include "sim/etat.h"

ZR_EXPORT int ZR_APPEL ZR_Executer(const char* requete, char* reponse, int* taille) {
    // Nothing may escape into the host's process: an unexpected failure is a call that
    // failed, reported by its number.
    try {
        const std::string dossier = sv140::sim::dossier_module();
        if (dossier.empty()) {
            return sv140::sim::kRetourErreurInterne;
        }
        return sv140::sim::Executer(sv140::joindre(dossier, "zrsim"), requete, reponse, taille);
    } catch (...) {
        return sv140::sim::kRetourErreurInterne;
    }
}
