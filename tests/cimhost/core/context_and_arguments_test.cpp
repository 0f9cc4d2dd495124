#include "broker_fixture.h"

using cimhost::ContextObject;

namespace {

class Arguments : public BrokerTest {
protected:
    CMPIrc add(const CMPIArgs* args, const char* name, const void* variable, CMPIType type) {
        return args->ft->addArg(args, name, at(variable), type).rc;
    }
    CMPIData getArg(const CMPIArgs* args, const char* name, CMPIrc expected = CMPI_RC_OK) {
        CMPIStatus status{CMPI_RC_ERROR, nullptr};
        const CMPIData data = args->ft->getArg(args, name, &status);
        EXPECT_EQ(status.rc, expected) << name;
        return data;
    }
};

class Context : public BrokerTest {
protected:
    Context() : context(ContextObject::make(scope->arena())) {
        context->addText(CMPIPrincipal, "guest");
        context->addNumber(CMPIInvocationFlags, 3);
    }
    CMPIData entry(const char* name, CMPIrc expected = CMPI_RC_OK) {
        CMPIStatus status{CMPI_RC_ERROR, nullptr};
        const CMPIData data = context->ft->getEntry(context, name, &status);
        EXPECT_EQ(status.rc, expected) << name;
        return data;
    }

    ContextObject* context;
};

} // namespace

TEST_F(Arguments, AnAbsentArgumentIsRc12) {
    const CMPIData data = getArg(arguments(), "Image", CMPI_RC_ERR_NO_SUCH_PROPERTY);
    EXPECT_EQ(data.type, CMPI_null);
    EXPECT_EQ(data.state, absentState);
}

TEST_F(Arguments, ANullArgumentHasItsTypeAndValueZero) {
    const CMPIArgs* args = arguments();
    EXPECT_EQ(add(args, "Target", nullptr, CMPI_ref), CMPI_RC_OK);
    const CMPIData data = getArg(args, "target");
    EXPECT_EQ(data.type, CMPI_ref);
    EXPECT_EQ(data.state, CMPI_nullValue);
    EXPECT_EQ(data.value.uint64, 0U);
}

TEST_F(Arguments, AnArrayHasItsElementTypeAndTheArrayFlag) {
    const CMPIArgs* args = arguments();
    const CMPIArray* bytes = array(3, CMPI_uint8);
    EXPECT_EQ(add(args, "Image", &bytes, CMPI_uint8A), CMPI_RC_OK);
    EXPECT_EQ(getArg(args, "Image").type, CMPI_uint8A);
    EXPECT_EQ(add(args, "Bare", &bytes, CMPI_ARRAY), CMPI_RC_OK);
    EXPECT_EQ(getArg(args, "Bare").type, CMPI_uint8A) << "never the bare flag";
    const CMPIArray* texts = array(3, CMPI_chars);
    EXPECT_EQ(add(args, "Texts", &texts, CMPI_charsA), CMPI_RC_OK);
    EXPECT_EQ(getArg(args, "Texts").type, CMPI_stringA);
}

TEST_F(Arguments, ChangesToAnArrayThatWasReadAreKept) {
    constexpr CMPICount size = 20;
    CMPIArray* given = array(size, CMPI_uint8);
    const auto write = [](CMPIArray* to, CMPICount index, CMPIUint8 number) {
        CMPIValue value{};
        value.uint8 = number;
        EXPECT_EQ(to->ft->setElementAt(to, index, &value, CMPI_uint8).rc, CMPI_RC_OK);
    };
    const auto read = [](const CMPIArray* from, CMPICount index) {
        const CMPIData data = from->ft->getElementAt(from, index, nullptr);
        return (data.state & CMPI_nullValue) != 0 ? -1 : int{data.value.uint8};
    };
    write(given, 9, 90);
    const CMPIArgs* args = arguments();
    EXPECT_EQ(add(args, "Image", &given, CMPI_uint8A), CMPI_RC_OK);
    write(given, 10, 100);
    CMPIArray* first = getArg(args, "Image").value.array;
    CMPIArray* second = getArg(args, "Image").value.array;
    CMPIArray* clone = first->ft->clone(first, nullptr);
    write(first, 9, 91);
    write(second, 19, 190);
    EXPECT_EQ(second->ft->setElementAt(second, 9, nullptr, CMPI_null).rc, CMPI_RC_OK);
    write(clone, 0, 1);
    const std::vector<const CMPIArray*> all{given, first, second, clone, getArg(args, "Image").value.array};
    const auto column = [&](CMPICount index) {
        std::vector<int> numbers;
        for (const CMPIArray* one : all)
            numbers.push_back(read(one, index));
        return numbers;
    };
    EXPECT_EQ(column(0), (std::vector<int>{-1, -1, -1, 1, -1}));
    EXPECT_EQ(column(9), (std::vector<int>{90, 91, -1, 90, 90}));
    EXPECT_EQ(column(10), (std::vector<int>{100, -1, -1, -1, -1}));
    EXPECT_EQ(column(19), (std::vector<int>{-1, -1, 190, -1, -1}));
    EXPECT_EQ(clone->ft->release(clone).rc, CMPI_RC_OK);
}

TEST_F(Arguments, TypesThatNoArgumentHasAreRc61) {
    const CMPIArgs* args = arguments();
    const CMPIArray* bytes = array(3, CMPI_uint8);
    for (const CMPIType type : Types{CMPI_null, CMPI_args, CMPI_class, CMPI_filter, CMPI_enumeration, CMPI_ptr,
                                     CMPI_ARRAY, 0x7777, CMPI_uint16A}) {
        if (type != CMPI_ARRAY) {
            EXPECT_EQ(add(args, "Bad", &bytes, type), CMPI_RC_ERR_INVALID_DATA_TYPE) << type;
        }
        if (type != CMPI_uint16A) {
            EXPECT_EQ(add(args, "Bad", nullptr, type), CMPI_RC_ERR_INVALID_DATA_TYPE) << type;
        }
    }
    EXPECT_EQ(args->ft->getArgCount(args, nullptr), 0U);
}

TEST_F(Arguments, KeepTheirOrderAndOneValueAName) {
    const CMPIArgs* args = arguments();
    const CMPIUint16 seven = 7;
    EXPECT_EQ(add(args, "B", &seven, CMPI_uint16), CMPI_RC_OK);
    EXPECT_EQ(add(args, "A", "text", CMPI_chars), CMPI_RC_OK);
    EXPECT_EQ(add(args, "b", "other", CMPI_chars), CMPI_RC_OK);
    CMPIStatus status{CMPI_RC_ERROR, nullptr};
    EXPECT_EQ(args->ft->getArgCount(args, &status), 2U);
    EXPECT_EQ(status.rc, CMPI_RC_OK);
    CMPIString* name = nullptr;
    EXPECT_EQ(textOf(args->ft->getArgAt(args, 0, &name, &status).value.string), "other");
    EXPECT_EQ(textOf(name), "B");
    EXPECT_EQ(args->ft->getArgAt(args, 2, &name, &status).state, absentState) << "one behind the last";
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
}

TEST_F(Arguments, BrokenArgumentsAreRc60) {
    CMPIArgs broken = *arguments();
    broken.hdl = nullptr;
    EXPECT_EQ(add(&broken, "A", "x", CMPI_chars), CMPI_RC_ERR_INVALID_HANDLE);
    getArg(&broken, "A", CMPI_RC_ERR_INVALID_HANDLE);
    CMPIStatus status{};
    EXPECT_EQ(broken.ft->getArgCount(&broken, &status), 0U);
    broken.ft->getArgAt(&broken, 0, nullptr, &status);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(add(arguments(), nullptr, "x", CMPI_chars), CMPI_RC_ERR_INVALID_PARAMETER);
}

TEST_F(Context, EntriesAreFoundWithoutRegardToCase) {
    EXPECT_EQ(textOf(entry("cmpiprincipal").value.string), "guest");
    EXPECT_EQ(entry(CMPIInvocationFlags).type, CMPI_uint32);
    EXPECT_EQ(entry(CMPIInvocationFlags).value.uint32, 3U);
}

TEST_F(Context, AnAbsentEntryIsRc12) { EXPECT_EQ(entry(CMPIRole, CMPI_RC_ERR_NO_SUCH_PROPERTY).state, absentState); }

TEST_F(Context, EntriesCanBeCountedListedAndAdded) {
    CMPIStatus status{CMPI_RC_ERROR, nullptr};
    EXPECT_EQ(context->ft->getEntryCount(context, &status), 2U);
    EXPECT_EQ(status.rc, CMPI_RC_OK);
    EXPECT_RC(context->ft->addEntry(context, CMPIContentLanguage, at("de"), CMPI_chars), CMPI_RC_OK);
    CMPIString* name = nullptr;
    EXPECT_EQ(textOf(context->ft->getEntryAt(context, 2, &name, &status).value.string), "de");
    EXPECT_EQ(textOf(name), CMPIContentLanguage);
    context->ft->getEntryAt(context, 3, &name, &status);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
    EXPECT_RC(context->ft->addEntry(context, nullptr, at("de"), CMPI_chars), CMPI_RC_ERR_INVALID_PARAMETER);
}

TEST_F(Context, ReleaseDoesNothingAndCloneIsAbsent) {
    EXPECT_RC(context->ft->release(context), CMPI_RC_OK);
    EXPECT_EQ(textOf(entry(CMPIPrincipal).value.string), "guest");
    EXPECT_EQ(context->ft->clone, nullptr);
}

TEST_F(Context, ABrokenContextIsRc60) {
    CMPIContext broken = *context;
    broken.hdl = nullptr;
    CMPIStatus status{};
    broken.ft->getEntry(&broken, CMPIPrincipal, &status);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
    broken.ft->getEntryAt(&broken, 0, nullptr, &status);
    EXPECT_EQ(broken.ft->getEntryCount(&broken, &status), 0U);
    EXPECT_RC(broken.ft->release(&broken), CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_RC(broken.ft->addEntry(&broken, "A", at("x"), CMPI_chars), CMPI_RC_ERR_INVALID_HANDLE);
}
