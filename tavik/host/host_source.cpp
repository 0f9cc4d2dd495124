#include "tavik/host/host_source.h"

#include <algorithm>
#include <condition_variable>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <net/if.h>

#include "tavik/host/fleet_mapping.h"
#include "tavik/host/host_facts.h"
#include "tavik/host/pci_names.h"
#include "tavik/host/port_facts.h"
#include "tavik/log.h"
#include "tavik/recording_folder.h"
#include "tavik/told_changes.h"

namespace tavik {

namespace host {

namespace {

/** Looks at the states of all Fibre Channel ports in a rhythm, on a thread of its own, and tells what moved. */
class StateWatch {
public:
    StateWatch(const SysTree& tree, AlarmSink sink, std::chrono::milliseconds interval)
        : reader_(tree), sink_(std::move(sink)), interval_(interval), states_(read()), thread_([this] { run(); }) {}

    ~StateWatch() {
        {
            const std::lock_guard lock(mutex_);
            stopped_ = true;
        }
        wake_.notify_all();
        thread_.join();
    }
    StateWatch(const StateWatch&) = delete;
    StateWatch& operator=(const StateWatch&) = delete;

private:
    using States = std::map<std::uint32_t, std::string>;

    States read() const {
        States states;
        for (const auto number : reader_.select())
            states[number] = reader_.link(number).state.valueOr("unknown");
        return states;
    }

    void run() {
        std::unique_lock lock(mutex_);
        while (!wake_.wait_for(lock, interval_, [this] { return stopped_; }))
            tellChanges(read());
    }

    void tellChanges(States now) {
        for (const auto& [number, state] : now) {
            const auto before = states_.find(number);
            if (before != states_.end() && before->second != state)
                sink_({static_cast<std::uint16_t>(number),
                       "host" + std::to_string(number) + ": port state " + before->second + " becomes " + state});
        }
        states_ = std::move(now);
    }

    FibreChannelReader reader_;
    AlarmSink sink_;
    std::chrono::milliseconds interval_;
    States states_; // the thread's alone once it runs
    std::mutex mutex_;
    std::condition_variable wake_;
    bool stopped_ = false;
    std::thread thread_; // last: it uses all of the above
};

/** What tells whether a look at the interfaces would see something else. */
struct LookKey {
    Attribute<std::vector<InterfaceLink>> links; ///< as far as they tell one interface from another
    Attribute<std::vector<InterfaceAddress>> addresses;

    bool operator==(const LookKey&) const = default;
};

Attribute<std::vector<InterfaceLink>> identities(Attribute<std::vector<InterfaceLink>> links) {
    if (!links) return links;
    auto all = *links;
    for (auto& link : all) {
        link.flags &= IFF_NOARP;
        link.operationalState = 0;
        link.carrier = false;
    }
    return all;
}

/** Reads the facts of one port: some dozens of files in a few folders, each opened once. */
class OneLook {
public:
    OneLook(const SysTree& tree, KernelQueries& queries)
        : tree_(tree.forOneLook()), own_(queries.forOneLook()), reader_(tree_, own_ ? *own_ : queries) {}

    const PortFactReader& facts() const { return reader_; }

private:
    const SysTree tree_;
    const std::unique_ptr<KernelQueries> own_; ///< null where the queries serve themselves
    const PortFactReader reader_;
};

class HostSource : public Source {
public:
    HostSource(const SysTree& tree, std::unique_ptr<KernelQueries> queries, std::chrono::milliseconds watchInterval,
               std::string place)
        : tree_(tree), queries_(std::move(queries)), network_(tree_, *queries_), fibreChannel_(tree_),
          watchInterval_(watchInterval), place_(std::move(place)), changes_(fingerprint(tree_, *queries_)) {}

    FleetOrError load() override {
        tree_.follow();
        // A recording need not have both; archives lose empty folders.
        if (const auto classes = tree_.resolve("sys/class/net"); !classes && !tree_.resolve("sys/class/fc_host"))
            return FleetError{"cannot read the network interfaces below " + place_ +
                              "/sys/class/net: " + classes.absence().reason};
        auto fleet = describeFleet(readHostFacts(tree_, *queries_), PciNames(tree_));
        remember(fleet);
        return fleet;
    }

    /**
     * A link that goes down takes addresses with it. Whoever refreshes at once learns the new state with the rest and
     * has no change to tell, so a change is put off by one question while a link has a state that nobody asked for.
     */
    bool changed() override {
        tree_.follow();
        const auto links = queries_->links();
        auto now = look(links);
        const bool isLinkUntold = hasUntoldLink(links);
        const std::lock_guard lock(mutex_);
        const bool isOther = changes_.isOther(now);
        isPutOff_ = isOther && isLinkUntold && !isPutOff_;
        if (isPutOff_) {
            changes_.tellNothing();
        } else {
            changes_.tell(std::move(now));
        }
        return isOther && !isPutOff_;
    }

    void resetChanged() override {
        std::unique_lock lock(mutex_);
        if (changes_.reset()) return;
        lock.unlock();
        auto now = look(queries_->links());
        lock.lock();
        changes_.resetTo(std::move(now));
    }

    void watch(AlarmSink sink) override { watch_.emplace(tree_, std::move(sink), watchInterval_); }

    Answer<PortProperty> portProperty(std::uint32_t handle) override {
        if (!isLoaded(handle)) return Answer<PortProperty>::failure(statusNoSuchDevice);
        return describePortProperty(fibreChannel_.link(hostOfHandle(handle)), hasTransceiver(handle));
    }

    Answer<Bytes> vpd(std::uint32_t handle) override {
        if (!isLoaded(handle)) return Answer<Bytes>::failure(statusNoSuchDevice);
        const std::lock_guard lock(mutex_);
        return vpdOfHandle_.at(handle);
    }

    Answer<std::string> uuid(std::uint32_t handle) override { return noData<std::string>(handle); }

    Answer<Statistics> refreshStatistics(std::uint32_t handle) override {
        if (!isLoaded(handle)) return Answer<Statistics>::failure(statusNoSuchDevice);
        return describeStatistics(fibreChannel_.counters(hostOfHandle(handle)));
    }

    Answer<Transceiver> storageTransceiver(std::uint32_t handle) override {
        if (!isLoaded(handle)) return Answer<Transceiver>::failure(statusNoSuchDevice);
        const auto number = hostOfHandle(handle);
        if (const auto module = fibreChannel_.transceiver(number)) return *module;
        return answer(fibreChannel_.networkInterface(number).then(
            [this](const std::string& interface) { return network_.transceiver(interface); }));
    }

    Answer<std::string> multiBootVersion(std::uint32_t handle) override { return noData<std::string>(handle); }

    Answer<Facts> storageFacts(std::uint32_t handle, std::uint32_t groups) override {
        if (!isLoaded(handle)) return Answer<Facts>::failure(statusNoSuchDevice);
        const OneLook look(tree_, *queries_);
        return withLoaded(storageFacts_, handle, look.facts().ofFibreChannelHost(hostOfHandle(handle), groups));
    }

    Answer<Facts> nicFacts(std::string_view deviceName, std::uint32_t groups) override {
        if (!isLoaded(deviceName)) return Answer<Facts>::failure(statusNoSuchDevice);
        const std::string name(deviceName);
        const OneLook look(tree_, *queries_);
        return withLoaded(nicFacts_, name, look.facts().ofInterface(name, groups));
    }

    Answer<Link> link(std::string_view deviceName) override {
        const std::string name(deviceName);
        if (!isRemembered(name) || !network_.exists(name, held_)) return Answer<Link>::failure(statusNoSuchDevice);
        const Link link = describeLink(network_.link(name, held_));
        const std::lock_guard lock(mutex_);
        interfaces_[name] = link.state;
        return link;
    }

    Answer<IPConfiguration> ipConfiguration(std::string_view deviceName) override {
        if (!isLoaded(deviceName)) return Answer<IPConfiguration>::failure(statusNoSuchDevice);
        return answer(selectAddresses(queries_->addresses(), network_.index(std::string(deviceName))));
    }

    Answer<std::vector<FCoELinkage>> fcoeLinkage(std::string_view deviceName) override {
        if (!isLoaded(deviceName)) return Answer<std::vector<FCoELinkage>>::failure(statusNoSuchDevice);
        const auto address = network_.currentAddress(std::string(deviceName));
        std::vector<FCoELinkage> linkages;
        for (const auto number : fibreChannel_.select())
            if (fibreChannel_.networkInterface(number).valueOr({}) == deviceName)
                linkages.push_back(
                    describeLinkage(fibreChannel_.link(number).portName, fibreChannel_.portId(number), address));
        return linkages;
    }

    Answer<Transceiver> nicTransceiver(std::string_view deviceName) override {
        if (!isLoaded(deviceName)) return Answer<Transceiver>::failure(statusNoSuchDevice);
        return answer(network_.transceiver(std::string(deviceName)));
    }

    Status updateFlash(std::uint32_t, const std::optional<std::string>&, const void*) override { return refuseFlash(); }
    Status updateOptionRom(std::uint32_t, const std::optional<std::string>&, std::string_view) override {
        return refuseFlash();
    }

private:
    Status refuseFlash() const {
        const std::string adapters = place_.empty() ? "of the host itself" : "of a recording";
        report("flash update refused: the adapters " + adapters + " are only read");
        return statusReadOnly;
    }

    template <typename Value>
    static Answer<Value> answer(const Attribute<Value>& attribute) {
        return attribute ? Answer<Value>(*attribute) : Answer<Value>::failure(statusNoData);
    }

    template <typename Value>
    Answer<Value> noData(std::uint32_t handle) {
        return Answer<Value>::failure(isLoaded(handle) ? statusNoData : statusNoSuchDevice);
    }

    /** Facts that were made when the adapters were loaded, and behind them those of this moment. */
    template <typename Key>
    Answer<Facts> withLoaded(const std::map<Key, Facts>& loaded, const Key& key, const std::vector<HostFact>& now) {
        Facts facts;
        {
            const std::lock_guard lock(mutex_);
            if (const auto found = loaded.find(key); found != loaded.end()) facts = found->second;
        }
        const Facts present = presentFacts(now);
        facts.insert(facts.end(), present.begin(), present.end());
        return facts;
    }

    bool isLoaded(std::uint32_t handle) {
        const std::lock_guard lock(mutex_);
        return vpdOfHandle_.contains(handle) && fibreChannel_.exists(hostOfHandle(handle));
    }

    bool isRemembered(const std::string& deviceName) {
        const std::lock_guard lock(mutex_);
        return interfaces_.contains(deviceName);
    }

    bool isLoaded(std::string_view deviceName) {
        const std::string name(deviceName);
        return isRemembered(name) && network_.exists(name);
    }

    /** Over Ethernet that of the load: the interface's module would be read over its bus for every question. */
    bool hasTransceiver(std::uint32_t handle) {
        if (fibreChannel_.transceiver(hostOfHandle(handle))) return true;
        const std::lock_guard lock(mutex_);
        return ethernetModules_.contains(handle);
    }

    /** The fingerprint of this moment. One answer of the kernel about all interfaces tells whether the last one still
     *  holds for them; only if it does not are they read one by one. */
    std::vector<std::string> look(const Attribute<std::vector<InterfaceLink>>& links) {
        const LookKey key{identities(links), queries_->addresses()};
        std::vector<std::string> lines;
        bool isSame = false;
        {
            const std::lock_guard lock(mutex_);
            isSame = key.links.present() && key == lookedAt_;
            if (isSame) lines = interfaceLines_;
        }
        if (!isSame) {
            lines = interfaceFingerprint(tree_, *queries_, key.addresses);
            const std::lock_guard lock(mutex_);
            lookedAt_ = key;
            interfaceLines_ = lines;
        }
        const auto more = fibreChannelFingerprint(tree_);
        lines.insert(lines.end(), more.begin(), more.end());
        std::sort(lines.begin(), lines.end());
        return lines;
    }

    bool hasUntoldLink(const Attribute<std::vector<InterfaceLink>>& links) {
        std::map<std::string, std::uint32_t> told;
        {
            const std::lock_guard lock(mutex_);
            told = interfaces_;
        }
        if (links)
            return std::any_of(links->begin(), links->end(), [&told](const InterfaceLink& link) {
                const auto known = told.find(link.name);
                return known != told.end() && known->second != linkStateOf(link);
            });
        return std::any_of(told.begin(), told.end(), [this](const auto& interface) {
            return network_.exists(interface.first) &&
                   describeLink(network_.link(interface.first)).state != interface.second;
        });
    }

    void remember(const Fleet& fleet) {
        std::map<std::string, std::uint32_t> interfaces;
        std::map<std::string, Facts> nicFacts;
        std::map<std::uint32_t, Facts> storageFacts;
        std::map<std::uint32_t, Bytes> vpds;
        std::set<std::uint32_t> ethernetModules;
        for (const auto& card : *fleet.cards)
            for (const auto& port : *card.ports)
                for (const auto& function : *port.functions) {
                    if (const auto* nic = std::get_if<NicFunction>(&function)) {
                        interfaces[nic->deviceName] = nic->link.state;
                        nicFacts[nic->deviceName] = nic->facts;
                    }
                    const auto* storage = std::get_if<StorageFunction>(&function);
                    if (storage == nullptr) continue;
                    vpds[storage->handle] = storage->vpd.value_or(Bytes());
                    storageFacts[storage->handle] = storage->facts;
                    if (storage->transceiver && fibreChannel_.networkInterface(hostOfHandle(storage->handle)))
                        ethernetModules.insert(storage->handle);
                }
        held_.clear();
        const std::lock_guard lock(mutex_);
        interfaces_ = std::move(interfaces);
        nicFacts_ = std::move(nicFacts);
        storageFacts_ = std::move(storageFacts);
        vpdOfHandle_ = std::move(vpds);
        ethernetModules_ = std::move(ethernetModules);
    }

    const SysTree tree_;
    const std::unique_ptr<KernelQueries> queries_;
    const NetworkDeviceReader network_;
    const FibreChannelReader fibreChannel_;
    const std::chrono::milliseconds watchInterval_;
    const std::string place_; ///< empty for the machine itself
    HeldAttributes held_{tree_};

    std::mutex mutex_; // guards what follows
    LookKey lookedAt_; ///< of the last look at the interfaces, and what it saw
    std::vector<std::string> interfaceLines_;
    ToldChanges<std::vector<std::string>> changes_;
    bool isPutOff_ = false;                           ///< the last question's change
    std::map<std::string, std::uint32_t> interfaces_; ///< of the load, with the link state that was told last
    std::map<std::string, Facts> nicFacts_;           ///< of the load
    std::map<std::uint32_t, Facts> storageFacts_;     ///< likewise
    std::map<std::uint32_t, Bytes> vpdOfHandle_;      ///< a card's memory is read once a load, because that is slow

    std::set<std::uint32_t> ethernetModules_; ///< handles of Fibre Channel over an interface with a module

    std::optional<StateWatch> watch_; // last: its thread ends first
};

} // namespace

std::unique_ptr<Source> makeHostSource(const SysTree& tree, std::unique_ptr<KernelQueries> queries,
                                       std::chrono::milliseconds watchInterval, const std::string& place) {
    return std::make_unique<HostSource>(tree, std::move(queries), watchInterval, place);
}

} // namespace host

std::unique_ptr<Source> makeHostSource() { return host::makeHostSource(host::SysTree(), host::makeLinuxQueries()); }

std::variant<std::unique_ptr<Source>, FleetError> makeRecordingSource(const std::filesystem::path& folder) {
    if (auto error = checkRecording(folder)) return std::move(*error);
    const host::SysTree tree(folder);
    return makeHostSource(tree, host::makeRecordedQueries(tree), host::defaultWatchInterval, folder.string());
}

} // namespace tavik
