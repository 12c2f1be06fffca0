-- The rows the fuzzing shop starts each input with, on top of a new shop's: a
-- professional, a linked card, two invoices sent in a lot with their slips, and three
-- attachments (accepted, deleted, waiting to be sent), as the demo leaves them.
-- The attachments were stored on another machine: their folder is re-rooted on this shop.
-- pont
INSERT INTO T_InfosCPS VALUES(1,'0','0','991234567','6','22','GIRARD','Élodie');
INSERT INTO T_InfosSituation_CPS VALUES(1,1,'1','0','1','31','3','99100123400018','','OPTIQUE DU CENTRE','99100123','1','','','1','28','30','00','0','0','0','1','1');
INSERT INTO T_InfosSituation_CPS VALUES(2,1,'2','0','1','31','3','99100123400026','','LUNETTERIE DE L HÔTEL DE VILLE','99100456','5','','','1','28','30','00','0','0','0','1','1');
INSERT INTO T_InfosVersion VALUES(1,'3.2.7.0','1.40','1.40.14.2','Lecteurs Simulés','SIM-BI2','SIM0000421','Linux','Appli SV Simulée','0540','20230915','103000','5A3F');
INSERT INTO T_InfosFacture VALUES(1,'1','LUN',1,'2026-11-24 00:00:00','FSE','Maladie','01','751','0441','44123456','AMO_AMC','Sesam-Vitale',86.1,150.0,290.0,53.9,0,1);
INSERT INTO T_InfosFacture VALUES(2,'2','LUN',1,'2026-11-24 00:00:00','FSE','Maladie','01','751','0441','44123456','AMO_AMC','Degrade',86.1,150.0,290.0,53.9,0,NULL);
INSERT INTO T_InfosDetailFacture VALUES(1,1,'MON','2210546','M',120.0,30.0,60,1,18.0,70.0,'Aucun',0);
INSERT INTO T_InfosDetailFacture VALUES(2,1,'VER','2227908','V',85.0,32.6,60,1,19.56,50.0,'Aucun',0);
INSERT INTO T_InfosDetailFacture VALUES(3,2,'MON','2210546','M',120.0,30.0,60,1,18.0,70.0,'Aucun',0);
INSERT INTO T_InfosBordereaux VALUES(1,'1','Sesam-Vitale',1,'261124040421','01','Régime Général','000001',NULL);
INSERT INTO T_InfosBordereaux VALUES(2,'2','Degrade',NULL,NULL,NULL,NULL,NULL,'D00002');
INSERT INTO T_InfosAdresse VALUES(1,'01','751','0000','CPAM DE PARIS','14 RUE DES TISSERANDS TSA 61001','75948','PARIS','CEDEX 19','0199001001','0199001002');
INSERT INTO T_InfosSCor VALUES(1,'1','ORDN','D:\Autre\Sv140Scor\202611\','20261124040421_000000001_ORDN_991001231_000000001.pdf','2026-11-24 04:04:21',40421,1,'LUN','',1,'2026-11-24 00:00:00',0,0,'PJ acceptée',0,-1);
INSERT INTO T_InfosSCor VALUES(2,'1','FSNC','D:\Autre\Sv140Scor\202611\','Document supprimé','2026-11-24 04:04:21',40421,0,'LUN','',2,'2026-11-24 00:00:00',0,0,'Document supprimé',12,-1);
INSERT INTO T_InfosSCor VALUES(3,'2','ORDN','D:\Autre\Sv140Scor\202611\','20261124040421_000000002_ORDN_991001231_000000003.pdf','2026-11-24 04:04:21',40421,2,'LUN','',3,NULL,-1,0,NULL,0,0);
INSERT INTO SCOR_Erreurs VALUES('FSNC','2','Feuille de Soins','MARTIN Julien');
-- hote
INSERT INTO T_Etat_Civil VALUES(1,'MARTIN','Julien','178057511504203','1978-05-12 00:00:00',1,NULL);
INSERT INTO "Saisie des Clients" VALUES(1,'MARTIN','Julien');
INSERT INTO "Fiche Technique Optique" VALUES(1,1,2);
INSERT INTO "Bordereau Mutuelle" VALUES('FC000001','1',1,'2026-11-24 00:00:00',0.0,86.1,150.0,86.1,150.0,-1,-1,'2026-11-24 00:00:00','Paye','P','2026-11-24 00:00:00');
INSERT INTO "Bordereau Mutuelle" VALUES('FC000002','2',2,'2026-11-24 00:00:00',0.0,86.1,150.0,0.0,0.0,0,0,NULL,NULL,NULL,NULL);
INSERT INTO "Fichier des Mutuelles" VALUES(1,'[TPGEN]');
INSERT INTO "Fichier des Mutuelles" VALUES(2,'[TPGEN]');
INSERT INTO "Contrat Mutuelles" VALUES(1,1);
INSERT INTO "Contrat Mutuelles" VALUES(2,2);
