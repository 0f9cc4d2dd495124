// Turns parsed MOF into declarations of a repository: resolves names, checks what a class may say, inherits.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "cimhost/model/class_repository.h"
#include "cimhost/model/mof_parser.h"

namespace cimhost {

/// The work of one load; finish() ends it.
class RepositoryBuilder final : public mof::Sink {
public:
    RepositoryBuilder(ClassRepository& target, std::string_view nameSpace);

    void readFile(const std::filesystem::path& file);
    void readText(std::string_view text, const std::string& fileName);
    /// What can only be checked once everything is there. Throws MofError.
    void finish() const;

private:
    struct AwaitedClass {
        const ClassRepository::Namespace* nameSpace;
        mof::Word name;
        std::string user;     // 'reference "Antecedent" of class "X"'
        std::string ancestor; // the target that the superclass declares, or empty
    };

    void takePragma(const mof::Word& name, const mof::Word& argument) override;
    void takeQualifierType(mof::QualifierType declaration) override;
    void takeClass(mof::Class declaration) override;

    void include(const mof::Word& file);
    [[nodiscard]] std::vector<Qualifier> resolveQualifiers(const std::vector<mof::QualifierUse>& uses,
                                                           std::string_view place) const;
    void addProperty(ClassContent& content, const mof::Feature& feature, const ClassDeclaration* superclass);
    void addMethod(ClassContent& content, const mof::Feature& feature, const ClassDeclaration* superclass);
    void addParameter(MethodDeclaration& method, const mof::Parameter& parameter, const std::string& owner);
    void awaitClass(const mof::TypedName& declared, const std::string& user, const std::string& ancestor);
    void countMemory(const ClassContent& content, const ClassDeclaration* superclass, const SourcePosition& position);

    ClassRepository& repository;
    ClassRepository::Namespace* current;
    std::vector<std::filesystem::path> openFiles; // empty for a text in memory
    std::vector<AwaitedClass> awaited;
    std::size_t fileCount = 0;
    std::size_t memory = 0;
};

} // namespace cimhost
