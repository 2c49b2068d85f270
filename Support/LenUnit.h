#pragma once
// Distance units: conversions from and to kilometres, unit names and the
// number texts of distances and attenuation coefficients. The OTDR module
// library calls this object through its virtual table, so the order of the
// virtual operations below is an interface: add new ones only at the end.

enum TDistanceUnit { duKM = 0, duMT = 1, duFT = 2, duKF = 3, duMI = 4 };

class TLenUnit {
public:
    TLenUnit() = default;

    virtual double KmToM(double x);   // slot 0
    virtual double KmToFt(double x);  // slot 1
    virtual double KmToKf(double x);  // slot 2
    virtual double KmToMi(double x);  // slot 3
    virtual double MToKm(double x);   // slot 4
    virtual double FtToKm(double x);  // slot 5
    virtual double KfToKm(double x);  // slot 6
    virtual double MiToKm(double x);  // slot 7
    // Rewrites the shared display-name table; the dB slot becomes "db".
    virtual void ResetUnitNames();  // slot 8
    // Not checked: an out-of-range unit behaves as each operation documents.
    virtual void SetUnit(int unit);                  // slot 9
    virtual int GetUnit();                           // slot 10
    virtual const char* GetUnitKeyword(int unit);    // slot 11
    virtual const char* GetUnitKeyword();            // slot 12
    virtual int ParseUnitKeyword(const char* text);  // slot 13
    virtual double ToKm(double x);                   // slot 14
    virtual double ToKm(double x, int unit);         // slot 15
    virtual double FromKm(double x);                 // slot 16
    virtual double FromKm(double x, int unit);       // slot 17
    virtual double KmToShortUnit(double x);          // slot 18
    virtual double AttenuationFromKm(double x);      // slot 19
    virtual double AttenuationToKm(double x);        // slot 20
    virtual int GetDecimals(int unit);               // slot 21
    virtual int GetDecimals();                       // slot 22
    // The Format operations write into `text` (caller's buffer) and return
    // the number of characters written.
    virtual int FormatDistance(char* text, double km, bool withName);            // slot 23
    virtual int FormatDistance(char* text, double km, int unit, bool withName);  // slot 24
    virtual int FormatAttenuation(char* text, double dbPerKm, bool withName,
                                  bool convert);  // slot 25
    // With `stripZeros` the text loses trailing zeros and a bare '.', and the
    // length before stripping is returned.
    virtual int FormatRounded(char* text, double x, double magnitude, bool stripZeros);  // 26
    virtual int FormatRounded(char* text, double x);                                     // 27
    virtual int FormatFiberLabel(char* text, int fiberCode, int number);                 // 28
    // Any of the nine display-name slots; "" outside them.
    virtual const char* GetUnitName(int index);    // slot 29
    virtual const char* GetUnitName();             // slot 30
    virtual const char* GetShortUnitName();        // slot 31
    virtual const char* GetDbName();               // slot 32
    virtual const char* GetAttenuationUnitName();  // slot 33
    virtual const char* GetTimeName();             // slot 34

    // Virtual so that deleting through a base pointer is safe, and declared
    // after every slot the module library uses so that their indices stay put.
    virtual ~TLenUnit();

    // Fills the display-name table with the start-up names ("dB" in slot 5).
    static void InitUnitNames();
    // The unit text FormatAttenuation writes when it does not convert.
    static void SetDefaultAttenuationUnitName(const char* name);

private:
    int unit = duKM;
};
