// Identifiers of the windows of formulaires_win32.rc and of their controls, shared by
// the resource script and ui_win32.cpp. The resource compiler reads this file too:
// plain #defines only.
#pragma once

// The review window of a capture session: three rows (prescription, claim form,
// other attachment).
#define IDD_DOCUMENTS_SCOR 101
// The review window of a prescription-only capture: one row.
#define IDD_DOCUMENT_ORDO2 102
// The chooser: a drop-down list and its confirm button.
#define IDD_CHOIX 103

// One row of a review window, numbered from 0: the field's label, the read-only box
// with its text, its "Ouvrir" and "Supprimer" buttons. The closing button "Enregistrer"
// is IDOK, so that Return presses it; Escape and the window's close give IDCANCEL,
// which closes the same way.
#define IDC_LIBELLE 1100
#define IDC_TEXTE 1110
#define IDC_OUVRIR 1120
#define IDC_SUPPRIMER 1130

// The chooser's list.
#define IDC_LISTE 1200
