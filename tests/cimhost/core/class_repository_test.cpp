#include "cimhost/model/class_repository.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

using namespace cimhost;

TEST(ClassRepository, FindsClassesWithoutRegardToCase) {
    ClassRepository repository;
    repository.loadText("root/test", "class CIM_Thing {};");
    const ClassDeclaration* found = repository.find("root/test", "cim_THING");
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->name(), "CIM_Thing") << "spelt as declared";
    EXPECT_EQ(repository.find("root/test", "CIM_Things"), nullptr);
    EXPECT_EQ(repository.find("root/test", ""), nullptr);
}

TEST(ClassRepository, TakesNamespacesWithoutCaseAndOuterSlashes) {
    ClassRepository repository;
    repository.loadText("/root/Test/", "class A {};");
    repository.loadText("ROOT/test", "class B {};");
    EXPECT_EQ(repository.namespaces(), (std::vector<std::string_view>{"root/Test"}));
    EXPECT_NE(repository.find("root/test//", "A"), nullptr);
    EXPECT_NE(repository.find("//root/tEST", "b"), nullptr);
    EXPECT_EQ(repository.find("root/test", "A")->nameSpace(), "root/Test");
    EXPECT_TRUE(repository.hasNamespace("/root/test"));
    EXPECT_FALSE(repository.hasNamespace("root"));
    EXPECT_EQ(repository.find("root", "A"), nullptr);
    EXPECT_TRUE(repository.classes("root").empty());
    EXPECT_TRUE(repository.qualifierDeclarations("root").empty());
}

TEST(ClassRepository, ANamespaceIsFoundUnderItsFurtherNames) {
    ClassRepository repository;
    repository.loadText("root/test", "class A {};");
    repository.addNamespace("root/other");
    repository.addAlias("/test/", "ROOT/test");
    repository.addAlias("root/other", "root/test");
    repository.addAlias("nowhere", "root/nowhere");
    ASSERT_NE(repository.find("Test", "A"), nullptr);
    EXPECT_EQ(repository.find("Test", "A")->nameSpace(), "root/test");
    EXPECT_EQ(repository.find("root/other", "A"), nullptr) << "the name was taken";
    EXPECT_FALSE(repository.hasNamespace("nowhere"));
    EXPECT_EQ(repository.namespaces(), (std::vector<std::string_view>{"root/test", "root/other"}));
    ASSERT_NE(repository.findAlias("TEST"), nullptr);
    EXPECT_EQ(repository.findAlias("TEST")->name, "test");
    EXPECT_EQ(repository.findAlias("TEST")->nameSpace, "root/test");
    EXPECT_EQ(repository.findAlias("root/test"), nullptr);
}

TEST(ClassRepository, AnEmptyNamespaceCanBeMadeAndMadeAgain) {
    ClassRepository repository;
    repository.addNamespace("root/empty");
    repository.addNamespace("/Root/Empty");
    EXPECT_EQ(repository.namespaces().size(), 1U);
    EXPECT_TRUE(repository.classes("root/empty").empty());
}

TEST(ClassRepository, KeepsWhatEarlierLoadsRead) {
    ClassRepository repository;
    repository.loadText("root/test", "class A { string N; };");
    repository.loadText("root/test", "class B : A { A REF Other; };");
    EXPECT_EQ(repository.find("root/test", "B")->superclass(), repository.find("root/test", "A"));
    ClassRepository moved = std::move(repository);
    EXPECT_TRUE(moved.find("root/test", "b")->isA("a"));
}

TEST(ClassRepository, ListsClassesInTheOrderOfTheirDeclaration) {
    ClassRepository repository;
    repository.loadText("root/test", "class Z {}; class M : Z {}; class A : Z {}; class X : M {}; class Y : A {};");
    std::string order;
    for (const ClassDeclaration* declaration : repository.classes("root/test"))
        order += declaration->name();
    EXPECT_EQ(order, "ZMAXY");
    order.clear();
    for (const ClassDeclaration* below : repository.find("root/test", "Z")->allSubclasses())
        order += below->name();
    EXPECT_EQ(order, "MXAY") << "a class before its own subclasses";
    EXPECT_EQ(repository.find("root/test", "Z")->subclasses().size(), 2U);
}

TEST(ClassRepository, AClassIsItselfAndItsAncestorsOnly) {
    ClassRepository repository;
    repository.loadText("root/test", "class A {}; class B : A {}; class C : B {}; class D : A {};");
    const ClassDeclaration& c = *repository.find("root/test", "C");
    EXPECT_TRUE(c.isA("c"));
    EXPECT_TRUE(c.isA("A"));
    EXPECT_TRUE(c.isA(*repository.find("root/test", "B")));
    EXPECT_FALSE(c.isA("D"));
    EXPECT_FALSE(c.isA(*repository.find("root/test", "D")));
    EXPECT_FALSE(repository.find("root/test", "A")->isA("C"));
}

TEST(ClassRepository, ManyThreadsReadItAtOnce) {
    ClassRepository repository;
    repository.loadText("root/test", "class A { string N; }; class B : A {};");
    std::vector<std::thread> threads;
    for (int count = 0; count < 4; ++count) {
        threads.emplace_back([&] {
            for (int round = 0; round < 1000; ++round) {
                const ClassDeclaration* found = repository.find("root/test", round % 2 ? "B" : "A");
                if (!found || found->findProperty("n") != 0) ADD_FAILURE();
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}
