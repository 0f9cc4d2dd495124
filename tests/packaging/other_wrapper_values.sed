# The same for the headers of values and arrays: values are converted to what they hold, and nobody asks for their type,
# gets what they hold by name, or sets it.
s/^    (CMPIType getType\(\) const .*)$/private: \1 public:/
s/^    ([A-Za-z0-9]+|const char\*) get(Boolean|[SU]int[0-9]+|Real[0-9]+|Char16|String|CString|DateTime|Array|Instance|ObjectPath)\(\) const/private: &/
s/^    void set(Boolean|[SU]int[0-9]+|Real[0-9]+|Char16|String|CString|DateTime|Array|Instance|ObjectPath)\(/private: &/
