# Turns our headers of the wrapper classes into those of the other package that is in use. It lacks what becomes private
# here, and has some things in another form. What is only private is found at compiling as well as what is not there,
# and the library that belongs to our headers can be linked with these; so the names for the linker stay ours.

# No string is made of a text, and no value of an instance.
s/^    (CmpiString\(const char\* text\);)$/private: \1 public:/
s/^    (CmpiData\(const CmpiInstance& value\) .*)$/private: \1 public:/

# A constant status has no message, and a constant instance answers by name alone.
s/^    const char\* msg\(\) const;$/    const char* msg() __asm__("_ZNK10CmpiStatus3msgEv");/
s/^    (CmpiBoolean instanceIsA\(const char\* className\)) const;$/    \1 __asm__("_ZNK12CmpiInstance11instanceIsAEPKc");/
s/^    (unsigned int getPropertyCount\(\)) const;$/    \1 __asm__("_ZNK12CmpiInstance16getPropertyCountEv");/
s/^    (CmpiData getProperty\(const int pos, CmpiString\* name = nullptr\)) const;$/    \1 __asm__("_ZNK12CmpiInstance11getPropertyEiP10CmpiString");/

# Arrays are indexed by int, and an assignment that nobody can use makes others ambiguous.
s/^    (CmpiArrayIdx operator\[\]\()CMPICount( index\) const);$/    \1int\2 __asm__("_ZNK9CmpiArrayixEj"); private: void operator=(int); public:/

# A null enumeration is not for everybody.
s/^    (CmpiEnumeration\(\) = default;)$/private: \1 public:/
