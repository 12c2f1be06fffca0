// The names of the files the bridge exchanges with the host, the middleware, the
// scanner and the PDF generator, all in the program folder. Each name is written once
// here, in one spelling: Linux tells apart names that the Windows file system takes as
// one file.
#pragma once

namespace sv140::fichiers {

// The middleware exchange.
inline constexpr const char* kRequete = "ZEMO_SvRequest.xml";
inline constexpr const char* kReponse = "ZEMO_SvResponse.xml";
inline constexpr const char* kRequeteAMC = "ZEMO_SvRequestAMC.xml";
inline constexpr const char* kReponseAMC = "ZEMO_SvResponseAMC.xml";

// The host's documents: its input, and the copy of the answer it reads.
inline constexpr const char* kRequeteHote = "ZEMO_Request.xml";
inline constexpr const char* kReponseHote = "ZEMO_Response.xml";
inline constexpr const char* kCertification = "CPE.TXT";

// A SCOR session: the host's order, the PDF generator's order, its program.
inline constexpr const char* kOrdreScor = "dctsScor.xml";
inline constexpr const char* kOrdrePdf = "dctsScorPDF.xml";
#if defined(_WIN32)
inline constexpr const char* kGenerateurPdf = "Scor.exe";
#else
inline constexpr const char* kGenerateurPdf = "Scor";
#endif
/// What the PDF generator printed during the last session (its reasons for a PDF it
/// could not write).
inline constexpr const char* kSortieGenerateur = "Scor_sortie.txt";

// The images of a session: the scanner's page, each kind's JPEG, the collected paper.
inline constexpr const char* kPageScannee = "monfichier.bmp";
inline constexpr const char* kImageOrdonnance = "Ordo_SCOR.jpg";
inline constexpr const char* kImageFeuilleDeSoins = "Cerfa_SCOR.jpg";
inline constexpr const char* kImageAutre = "Autre_SCOR.jpg";
inline constexpr const char* kPapierCollecte = "collecte.jpg";

}  // namespace sv140::fichiers
