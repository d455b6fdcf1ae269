// The inputs that the benchmarks parse, shared by the per-format loops and the
// cost report, so that both time the same codes.
#pragma once

#include <string>

namespace qvx_bench {

inline std::string padded(std::string text, std::size_t width) {
    text.resize(width, ' ');
    return text;
}

// GS1 element strings in machine form: a retail label (GTIN, expiry, lot,
// serial) and a long logistics label (SSCC, weights, dimensions, counts,
// ship-to address, dates).
inline const std::string kGs1Retail =
    "01095011015300031727063010AB12345\x1d"
    "21SN00042";
inline const std::string kGs1Logistics =
    "00006141411234567890"
    "0210614141000415"
    "3103001250"
    "3302000830"
    "3122000120"
    "3132000080"
    "3142000060"
    "3724\x1d"
    "400PO-2024-000117\x1d"
    "4300ACME%20Logistics%20Ltd\x1d"
    "43021%20High%20Street\x1d"
    "4304Springfield\x1d"
    "4307GB"
    "43242406151430"
    "4330002500"
    "1524063010BATCH-42\x1d"
    "4104012345000009";

// GS1 Digital Link URIs: a canonical one for a GTIN with lot, serial and
// expiry, and a long lax one with convenience words, many query attributes
// (measures, dates, an encoded address) and attributes that name no AI.
inline const std::string kDigitalLinkCanonical =
    "https://id.gs1.org/01/09506000134352/10/ABC123/21/SN12345?17=261231";
inline const std::string kDigitalLinkLongLax =
    "http://brand.example.com/shop/products/gtin/09506000134352/lot/LOT-2024-117/ser/SN0000042"
    "?expiryDateCode=261231&bestBeforeDateParameter=261130&packDateParameter=260115"
    "&3103=001250&3302=000830&3122=000120&countParameter=24&400=PO-2024-000117"
    "&4300=ACME%2FLogistics&4302=1%2CHigh%2BStreet%26Co&4307=GB"
    "&linkType=gs1:certificationInfo&context=dscsa&lang=en";

// One HIBC label: primary and secondary segments with an expiry date and a lot.
inline const std::string kHibc = "+H123GLOVE5/$$3270630LOT8841/16D20240630D";

// Boarding passes. One leg, version 6, with the pass-level items, one baggage
// group and airline use; two legs, the second with its own leg-level items,
// and security data.
inline const std::string kBcbpOneLeg =
    "M1SMITH/JOHN          EXYZ789 LHRJFKBA 0117 123Y023C0042 14E>6180WW4122BBA "
    "01251234560012A1251234567890 0BA BA 12345678         1PCNABC123";
inline const std::string kBcbpTwoLegs =
    "M2SMITH/JOHN          EXYZ789 LHRJFKBA 0117 123Y023C0042 148>6180WW4122BBA "
    "01251234560012A1251234567890 0BA BA 12345678         1PCNXYZ789 JFKBOSAA 42   "
    "125Y012A7    12C2A0019876543210 0AA                        Y^10ASIGNATURE1";

// A Swiss payment QR bill: structured addresses, creditor reference, bill
// information and one alternative procedure.
inline const std::string kSwissQrBill =
    "SPC\n0200\n1\nCH9300762011623852957\nS\nGenossenschaft Wasserversorgung Aaretal\n"
    "Dorfstrasse\n27\n3113\nRubigen\nCH\n\n\n\n\n\n\n\n386.40\nCHF\nS\nBeat Zimmermann\n"
    "Hofweg\n9\n3114\nWichtrach\nCH\nSCOR\nRF18539007547034\nWasserrechnung 2. Quartal 2024\n"
    "EPD\n//S1/10/2024042/11/240630/30/106017086/32/8.1\neBill/B/beat.zimmermann@example.ch";

// Uniformed-services ID cards: everything from the name to the pay grade is
// shared by both kinds; a sponsor card carries its photograph behind the text,
// for which 2 KB stand in.
inline const std::string kUsidPersonalPart =
    padded("DOE,JANE M", 27) + "123456789" + "0" + "000000000" + "30" + "64" + "130" + "BN" + "GR" +
    "1987SEP02" + "SMYYU" + "2019JUN01" + "2025JUN01" + "2   " + "2021JUN01" + "2025JUN01" +
    "A1B2" + "A" + "AD    " + "USA  " + "CPT   " + "O3  ";
inline const std::string kUsidDependent =
    "IDUS28C7Q0" + kUsidPersonalPart + padded("DOE,JOHN A", 27) + "123456789" + "SP    ";
inline const std::string kUsidSponsor =
    "IDUS28C7Q1" + kUsidPersonalPart + "II O+ " + std::string(2048, '\x5A');

// Driver licences: a version 8 barcode of 333 bytes (main and jurisdiction
// subfile), a version 1 barcode with the name in one element, and a stripe.
inline const std::string kDlidVersion8 =
    "@\n"
    "\x1e\r"
    "ANSI 636015080102DL00410254ZT02950038DLDCAD\n"
    "DCBNONE\n"
    "DCDNONE\n"
    "DBA03142028\n"
    "DCSSMITH\n"
    "DACJOHN\n"
    "DADPAUL\n"
    "DBD01152020\n"
    "DBB03141985\n"
    "DBC1\n"
    "DAYBRO\n"
    "DAU070 in\n"
    "DAG123 MAIN ST\n"
    "DAIAUSTIN\n"
    "DAJTX\n"
    "DAK787010000\n"
    "DAQ12345678\n"
    "DCFA1B2C3D4E5F6\n"
    "DCGUSA\n"
    "DDEN\n"
    "DDFN\n"
    "DDGN\n"
    "DAW180\n"
    "DAZBRO\n"
    "DCK12345678901234\n"
    "DDAF\n"
    "DDB04162010\n"
    "DDD0\r"
    "ZTZTAXXXXXXXXXXXXXXXXXXXXXXXXXXX\n"
    "ZTBN\r";
inline const std::string kDlidVersion1 =
    "@\n"
    "\x1e\r"
    "ANSI 6360150101DL00290139DLDAQ12345678\n"
    "DAASMITH,JOHN,P\n"
    "DAG123 MAIN ST\n"
    "DAIAUSTIN\n"
    "DAJTX\n"
    "DAK78701\n"
    "DBA20280314\n"
    "DBB19850314\n"
    "DBCM\n"
    "DBD20200115\n"
    "DAU510\n"
    "DAW180\n"
    "DAYBRO\n"
    "DAZBRN\r";
inline const std::string kDlidStripe =
    "%TXAUSTIN^DOE$JOHN$PAUL^123 MAIN ST^?;6360151234567=290319850314?%8178701      C "
    "              1510080BROBLU0123456789SPECTACLES            00001?";

// VINs: a clean one, and a label scan (caption, blank, number).
inline const std::string kVinClean = "1HGCM82633A004352";
inline const std::string kVinLabel = "VIN 1HGCM82633A004352";

// Machine-readable zones: the ICAO specimen passport and identity card, and
// the card with two look-alikes (an O for a zero in the number and in the
// optional data) that the compensator has to try readings for.
inline const std::string kMrzTd3 =
    "P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<\n"
    "L898902C36UTO7408122F1204159ZE184226B<<<<<10";
inline const std::string kMrzTd1 =
    "I<UTOD231458907<<<<<<<<<<<<<<<\n"
    "7408122F1204159UTO<<<<<<<<<<<6\n"
    "ERIKSSON<<ANNA<MARIA<<<<<<<<<<";
inline const std::string kMrzTd1LookAlikes =
    "I<UTOD23145O901<<<<<<<<<<<<<<<\n"
    "7408122F1204159UTOAB1O<<<<<<<2\n"
    "ERIKSSON<<ANNA<MARIA<<<<<<<<<<";

}  // namespace qvx_bench
