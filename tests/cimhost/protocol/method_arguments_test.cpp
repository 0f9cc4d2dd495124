// The arguments of a method on their way from a request to a provider: types, references, arrays in both forms.
#include "cimhost/service/method_requests.h"

#include "cimhost/broker/broker.h"

#include <gtest/gtest.h>

namespace cimhost {

namespace {

constexpr const char* declarations = R"(
Qualifier Key : boolean = false, Scope(property, reference);
Qualifier In : boolean = true, Scope(parameter);
Qualifier Out : boolean = false, Scope(parameter);
class T_Card { [Key] string Id; };
class T_Service {
    [Key] string Name;
    uint32 Install([In] uint8 Image[], [In] T_Card REF Target, [In] T_Card REF Others[], [In] string URI, [In] string Names[],
                   [In(false), Out] uint16 Progress);
};
)";

class MethodArgumentsTest : public testing::Test {
protected:
    MethodArgumentsTest() { classes.loadText("root/t", declarations); }

    cimxml::Value texts(const std::vector<std::string>& values, bool isArray) {
        cimxml::Value value;
        value.isNull = false;
        value.isArray = isArray;
        for (const std::string& text : values)
            value.texts.append(text);
        return value;
    }

    const NamedData* argument(const std::string& name, const cimxml::Value& value,
                              ArrayArguments form = ArrayArguments::tagged) {
        const MethodDeclaration& method = *classes.find("root/t", "T_Service")->method("Install");
        return makeArguments(scope, "root/t", method, {{name, &value}}, form).argument(name);
    }

    CMPIrc refusal(const std::string& name, const cimxml::Value& value) {
        try {
            argument(name, value);
            return CMPI_RC_OK;
        } catch (const CimFailure& failure) {
            return static_cast<CMPIrc>(failure.error().code);
        }
    }

    ClassRepository classes;
    Broker broker{classes};
    RequestScope scope{broker};
};

TEST_F(MethodArgumentsTest, AnArrayComesWithItsElementTypeOrBareAsTheServerWasTold) {
    const cimxml::Value image = texts({"1", "255"}, true);
    const NamedData* tagged = argument("Image", image);
    EXPECT_EQ(tagged->data.type, CMPI_uint8A);
    const NamedData* bare = argument("image", image, ArrayArguments::bare);
    EXPECT_EQ(bare->data.type, CMPI_ARRAY);
    EXPECT_EQ(bare->name, "Image") << "spelt as declared";
    for (const NamedData* given : {tagged, bare}) {
        const ArrayObject* array = ArrayObject::from(given->data.value.array);
        EXPECT_EQ(array->elementType(), CMPI_uint8);
        EXPECT_EQ(array->element(1).value.uint8, 255);
    }
}

TEST_F(MethodArgumentsTest, AProviderReadsTheBareFormThroughTheTable) {
    const cimxml::Value image = texts({"7"}, true);
    const MethodDeclaration& method = *classes.find("root/t", "T_Service")->method("Install");
    const ArgsObject& arguments = makeArguments(scope, "root/t", method, {{"Image", &image}}, ArrayArguments::bare);
    CMPIStatus status{};
    const CMPIData data = arguments.ft->getArg(&arguments, "Image", &status);
    EXPECT_EQ(status.rc, CMPI_RC_OK);
    EXPECT_EQ(data.type, CMPI_ARRAY);
    EXPECT_EQ(data.value.array->ft->getElementAt(data.value.array, 0, &status).value.uint8, 7);
    arguments.ft->getArg(&arguments, "URI", &status);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NO_SUCH_PROPERTY) << "what the client left out is not there";
}

TEST_F(MethodArgumentsTest, OneValueServesWhereAnArrayStands) {
    const NamedData* image = argument("Image", texts({"9"}, false));
    EXPECT_EQ(ArrayObject::from(image->data.value.array)->size(), 1U);
}

TEST_F(MethodArgumentsTest, AReferenceMayBeWrittenAsTheTextOfItsPath) {
    const NamedData* target = argument("Target", texts({"root/t:T_Card.Id=\"a\""}, false));
    ASSERT_EQ(target->data.type, CMPI_ref);
    EXPECT_EQ(ObjectPathObject::from(static_cast<const CMPIObjectPath*>(target->data.value.ref))->className(),
              "T_Card");
    const NamedData* others = argument("Others", texts({"T_Card.Id=\"a\"", "T_Card.Id=\"b\""}, true));
    EXPECT_EQ(others->data.type, CMPI_refA);
    EXPECT_EQ(ArrayObject::from(others->data.value.array)->size(), 2U);
}

TEST_F(MethodArgumentsTest, NullIsNullOfTheDeclaredType) {
    const NamedData* target = argument("Target", cimxml::Value());
    EXPECT_EQ(target->data.type, CMPI_ref);
    EXPECT_NE(target->data.state & CMPI_nullValue, 0);
}

TEST_F(MethodArgumentsTest, AValueThatDoesNotFitIsAnInvalidParameter) {
    cimxml::Value reference;
    reference.isNull = false;
    reference.type = CMPI_ref;
    reference.references.push_back({});
    EXPECT_EQ(refusal("Color", texts({"red"}, false)), CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(refusal("Progress", texts({"1"}, false)), CMPI_RC_ERR_INVALID_PARAMETER) << "it only comes out";
    EXPECT_EQ(refusal("Image", texts({"256"}, true)), CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(refusal("URI", texts({"a", "b"}, true)), CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(refusal("URI", reference), CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(refusal("Image", reference), CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(refusal("Target", texts({"no path"}, false)), CMPI_RC_ERR_INVALID_PARAMETER);
}

TEST_F(MethodArgumentsTest, OnlyBytesMayBeMoreThanAnArgumentNeeds) {
    const std::vector<std::string> most(65536, "7");
    const std::vector<std::string> tooMany(65537, "7");
    EXPECT_EQ(refusal("Names", texts(most, true)), CMPI_RC_OK);
    EXPECT_EQ(refusal("Image", texts(tooMany, true)), CMPI_RC_OK);
    EXPECT_EQ(refusal("Names", texts(tooMany, true)), CMPI_RC_ERR_INVALID_PARAMETER);
    for (const auto& [name, type] : {std::pair{"Names", "string"}, std::pair{"Others", "reference"}}) {
        try {
            argument(name, texts(tooMany, true));
            ADD_FAILURE() << name;
        } catch (const CimFailure& failure) {
            const std::string message = failure.what();
            EXPECT_NE(message.find(name), std::string::npos) << message;
            EXPECT_NE(message.find(std::string("an array of ") + type + " has at most 65536 entries"),
                      std::string::npos)
                << message;
        }
    }
}

} // namespace

} // namespace cimhost
