#include "degats.h"

#include <filesystem>

namespace fs = std::filesystem;

namespace bb {

std::string nom(DocumentAbime d) {
    switch (d) {
        case DocumentAbime::Absent:
            return "missing";
        case DocumentAbime::Vide:
            return "empty";
        case DocumentAbime::Malforme:
            return "cut short";
        case DocumentAbime::MalEncode:
            return "wrongly encoded";
        case DocumentAbime::Entite:
            return "declaring an entity";
        case DocumentAbime::Enorme:
            return "100 MB";
    }
    return "?";
}

std::optional<std::string> abimer(DocumentAbime d, const std::string& valide) {
    const std::size_t fin_declaration = valide.starts_with("<?xml") ? valide.find("?>") + 2 : 0;
    const std::size_t racine = valide.find('<', fin_declaration);
    const std::size_t apres_racine = valide.find('>', racine) + 1;
    const std::string nom_racine =
        valide.substr(racine + 1, valide.find_first_of(" >/", racine) - racine - 1);
    switch (d) {
        case DocumentAbime::Absent:
            return std::nullopt;
        case DocumentAbime::Vide:
            return "";
        case DocumentAbime::Malforme:
            return valide.substr(0, apres_racine + (valide.size() - apres_racine) / 2);
        case DocumentAbime::MalEncode:
            // Declared UTF-8, written in Latin-1: "é" alone is no UTF-8 sequence.
            return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>" +
                   valide.substr(fin_declaration, apres_racine - fin_declaration) +
                   "<!-- \xE9t\xE9 -->" + valide.substr(apres_racine);
        case DocumentAbime::Entite:
            return valide.substr(0, fin_declaration) + "<!DOCTYPE " + nom_racine +
                   " [ <!ENTITY e \"x\"> ]>" + valide.substr(fin_declaration);
        case DocumentAbime::Enorme: {
            std::string bourrage;
            const std::string element = "<bourrage>" + std::string(1000, 'x') + "</bourrage>";
            bourrage.reserve(100 * 1024 * 1024 + element.size());
            while (bourrage.size() < 100 * 1024 * 1024) {
                bourrage += element;
            }
            return valide.substr(0, apres_racine) + bourrage + valide.substr(apres_racine);
        }
    }
    return valide;
}

std::string nom(BaseAbimee b) {
    switch (b) {
        case BaseAbimee::Absente:
            return "missing";
        case BaseAbimee::Vide:
            return "zero bytes";
        case BaseAbimee::Corrompue:
            return "corrupt";
        case BaseAbimee::LectureSeule:
            return "read-only";
        case BaseAbimee::Verrouillee:
            return "locked";
        case BaseAbimee::ColonneManquante:
            return "column missing";
    }
    return "?";
}

Degat::Degat(BaseAbimee b, std::string base, const std::string& table, const std::string& colonne)
    : base_(std::move(base)), copie_(base_ + ".intacte") {
    fs::copy_file(base_, copie_, fs::copy_options::overwrite_existing);
    switch (b) {
        case BaseAbimee::Absente:
            fs::remove(base_);
            break;
        case BaseAbimee::Vide:
            ecrire(base_, "");
            break;
        case BaseAbimee::Corrompue: {
            // The header still says SQLite, the first page's tree is garbage: the file opens,
            // and its first read fails.
            std::string octets = lire(base_).value_or("");
            for (std::size_t i = 100; i < octets.size() && i < 4096; ++i) {
                octets[i] = 'x';
            }
            ecrire(base_, octets);
            break;
        }
        case BaseAbimee::LectureSeule:
            immuable_.emplace(base_);
            pris_ = immuable_->pris();
            break;
        case BaseAbimee::Verrouillee:
            ecriture_.emplace(base_);
            break;
        case BaseAbimee::ColonneManquante:
            // SQLite refuses to drop an indexed column; an older file has neither.
            for (const Textes& index :
                 sql(base_, "SELECT name FROM sqlite_master WHERE type = 'index' AND tbl_name = '" +
                                table + "' AND sql LIKE '%" + colonne + "%'")) {
                sql(base_, "DROP INDEX [" + index[0] + "]");
            }
            sql(base_, "ALTER TABLE [" + table + "] DROP COLUMN [" + colonne + "]");
            break;
    }
}

Degat::~Degat() {
    ecriture_.reset();
    immuable_.reset();
    for (const char* suffixe : {"-wal", "-shm", "-journal"}) {
        fs::remove(base_ + suffixe);
    }
    fs::rename(copie_, base_);
}

const Textes& textes_hostiles() {
    static const Textes t = {"'",
                             "\"",
                             "#",
                             ";",
                             "]",
                             "&",
                             "<",
                             "O'Brien \"Ô\" #1; [x] & <y>",
                             std::string("avant\0apr\xC3\xA8s", 11),
                             std::string(10000, 'W'),
                             "\xC5\x81ukasz \xC5\x90z \xF0\x9F\x91\x93"};
    return t;
}

}  // namespace bb
