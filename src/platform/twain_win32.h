// The part of the TWAIN protocol (version 1.9, Windows) that the scanner and the test
// tree's data source speak: the structures, packed on two bytes as the protocol lays
// them out, and the codes they use. Debian's mingw-w64 headers carry no TWAIN header.
#pragma once

#include "platform/windows_win32.h"

namespace sv140::twain {

using Uint16 = unsigned short;
using Int16 = short;
using Uint32 = unsigned long;
using Chaine32 = char[34];

#pragma pack(push, 2)

struct Fix32 {
    Int16 entier;
    Uint16 fraction;
};

struct Version {
    Uint16 majeur, mineur, langue, pays;
    Chaine32 info;
};

struct Identite {
    Uint32 id;
    Version version;
    Uint16 protocole_majeur, protocole_mineur;
    Uint32 groupes;
    Chaine32 fabricant, famille, produit;
};

struct UneValeur {
    Uint16 type;
    Uint32 valeur;
};

struct Capacite {
    Uint16 cap;
    Uint16 conteneur_type;
    HANDLE conteneur;
};

struct Evenement {
    void* msg;
    Uint16 message_twain;
};

struct InterfaceUtilisateur {
    Uint16 montrer, modale;
    HANDLE parent;
};

struct TransfertsEnAttente {
    Uint16 nombre;
    Uint32 reserve;
};

struct Etat {
    Uint16 condition, reserve;
};

#pragma pack(pop)

static_assert(sizeof(Identite) == 156 && sizeof(UneValeur) == 6 && sizeof(Capacite) == 8);

/// DSM_Entry and DS_Entry.
using Entree = Uint16(WINAPI*)(Identite* origine, Identite* destination, Uint32 groupe,
                               Uint16 donnee, Uint16 message, void* contenu);

inline constexpr Uint16 kProtocoleMajeur = 1, kProtocoleMineur = 9;
inline constexpr Uint16 kLangueFrancais = 5, kPaysFrance = 33;

inline constexpr Uint32 DG_CONTROL = 0x0001, DG_IMAGE = 0x0002;

inline constexpr Uint16 DAT_NULL = 0x0000, DAT_CAPABILITY = 0x0001, DAT_EVENT = 0x0002,
                        DAT_IDENTITY = 0x0003, DAT_PARENT = 0x0004, DAT_PENDINGXFERS = 0x0005,
                        DAT_STATUS = 0x0008, DAT_USERINTERFACE = 0x0009,
                        DAT_IMAGENATIVEXFER = 0x0104;

inline constexpr Uint16 MSG_NULL = 0x0000, MSG_GET = 0x0001, MSG_GETDEFAULT = 0x0003,
                        MSG_GETFIRST = 0x0004, MSG_GETNEXT = 0x0005, MSG_SET = 0x0006,
                        MSG_RESET = 0x0007, MSG_XFERREADY = 0x0101, MSG_CLOSEDSREQ = 0x0102,
                        MSG_CLOSEDSOK = 0x0103, MSG_OPENDSM = 0x0301, MSG_CLOSEDSM = 0x0302,
                        MSG_OPENDS = 0x0401, MSG_CLOSEDS = 0x0402, MSG_USERSELECT = 0x0403,
                        MSG_DISABLEDS = 0x0501, MSG_ENABLEDS = 0x0502, MSG_PROCESSEVENT = 0x0601,
                        MSG_ENDXFER = 0x0701;

inline constexpr Uint16 TWRC_SUCCESS = 0, TWRC_FAILURE = 1, TWRC_CHECKSTATUS = 2, TWRC_CANCEL = 3,
                        TWRC_DSEVENT = 4, TWRC_NOTDSEVENT = 5, TWRC_XFERDONE = 6,
                        TWRC_ENDOFLIST = 7;

inline constexpr Uint16 TWCC_SUCCESS = 0, TWCC_BUMMER = 1, TWCC_NODS = 3, TWCC_OPERATIONERROR = 5,
                        TWCC_BADPROTOCOL = 9, TWCC_BADVALUE = 10, TWCC_SEQERROR = 11,
                        TWCC_CAPUNSUPPORTED = 13;

inline constexpr Uint16 TWON_ONEVALUE = 5;
inline constexpr Uint16 TWTY_UINT16 = 0x0004, TWTY_FIX32 = 0x0007;

inline constexpr Uint16 ICAP_PIXELTYPE = 0x0101, ICAP_UNITS = 0x0102, ICAP_BRIGHTNESS = 0x1101,
                        ICAP_CONTRAST = 0x1103, ICAP_XRESOLUTION = 0x1118,
                        ICAP_YRESOLUTION = 0x1119;

inline constexpr Uint16 TWUN_INCHES = 0;
inline constexpr Uint16 TWPT_BW = 0, TWPT_GRAY = 1, TWPT_RGB = 2;

}  // namespace sv140::twain
