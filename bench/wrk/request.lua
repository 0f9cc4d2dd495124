-- One CIM-XML request, again and again: wrk ... -s request.lua URL -- METHOD FILE
function init(arguments)
    local file = assert(io.open(arguments[2], "rb"))
    wrk.method = "POST"
    wrk.body = file:read("*a")
    wrk.headers["Content-Type"] = 'application/xml; charset="utf-8"'
    wrk.headers["CIMOperation"] = "MethodCall"
    wrk.headers["CIMMethod"] = arguments[1]
    wrk.headers["CIMObject"] = "root/merolt_cmpi"
    file:close()
end
