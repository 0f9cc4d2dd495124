# METHODCALL messages, and what comes back, at a server whose fleet, a copy, may be written. Sourced with CIMHOST and FLEET
# as arguments; sets what server.sh sets.

# shellcheck source=tests/end_to_end/server.sh
source "$(dirname "${BASH_SOURCE[0]}")/server.sh" "$1" "$2" --bare-arrays --anonymous-writes

storage=Merolt_FCHBA_SoftwareInstallationService
nic=Merolt_NIC_SoftwareInstallationService

begin_call() { # begin_call CLASS METHOD
    cat <<END
<?xml version="1.0"?><CIM CIMVERSION="2.0" DTDVERSION="2.0"><MESSAGE ID="1" PROTOCOLVERSION="1.0"><SIMPLEREQ>
<METHODCALL NAME="$2"><LOCALCLASSPATH><LOCALNAMESPACEPATH><NAMESPACE NAME="root"/><NAMESPACE NAME="merolt_cmpi"/>
</LOCALNAMESPACEPATH><CLASSNAME NAME="$1"/></LOCALCLASSPATH>
END
}
end_call() { printf '</METHODCALL></SIMPLEREQ></MESSAGE></CIM>\n'; }

# Sends what it reads as it comes, in chunks.
send_call() {
    curl -s -X POST -T - -H 'Content-Type: application/xml' -H 'CIMOperation: MethodCall' -H 'Expect:' \
        "http://$url/cimom"
}

call() { # call CLASS METHOD PARAMETERS, the last as XML
    { begin_call "$1" "$2"; printf '%s' "$3"; end_call; } | send_call
}

value_of() { sed -n 's|.*<RETURNVALUE PARAMTYPE="uint32"><VALUE>\([0-9]*\)</VALUE>.*|\1|p' <<<"$1"; }
code_of() { sed -n 's|.*<ERROR CODE="\([0-9]*\)".*|\1|p' <<<"$1"; }

text_parameter() { printf '<PARAMVALUE NAME="%s" PARAMTYPE="string"><VALUE>%s</VALUE></PARAMVALUE>' "$1" "$2"; }
target_parameter() { # target_parameter CLASS DEVICE_ID
    printf '<PARAMVALUE NAME="Target" PARAMTYPE="reference"><VALUE.REFERENCE><INSTANCENAME CLASSNAME="%s"><KEYBINDING NAME="DeviceID"><KEYVALUE VALUETYPE="string">%s</KEYVALUE></KEYBINDING></INSTANCENAME></VALUE.REFERENCE></PARAMVALUE>' "$1" "$2"
}
no_options='<PARAMVALUE NAME="InstallOptions" PARAMTYPE="uint16"/>'
image_parameter() {
    printf '<PARAMVALUE NAME="Image" PARAMTYPE="uint8"><VALUE.ARRAY>'
    od -An -v -tu1 -w64 "$1" | sed 's|  *\([0-9][0-9]*\)|<VALUE>\1</VALUE>|g'
    printf '</VALUE.ARRAY></PARAMVALUE>'
}
