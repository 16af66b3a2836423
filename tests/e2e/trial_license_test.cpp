#include <gmock/gmock.h>

#include "support/one_request.h"
#include "support/raw_server.h"

namespace quorvelle::testing {
namespace {

using ::testing::ElementsAre;

const QStringList kRequest{"license", "request-trial", "--name", "%1 & Söhne"};

struct TrialLicense : ServerTest {
    TrialLicense() { box.environment.insert("QUORVELLE_TRIAL_URL", service.url() + "/"); }

    FakeServer service;
};

TEST_F(TrialLicense, IsFetchedFromTheServiceAndInstalledOnTheServer) {
    const QJsonObject trial =
        json("{'tier':'T','licensee':'%1','days_left':9,'expires':'later','blob':[5000000001]}");
    service.onJson("POST", "/api/trial", trial);
    server.onJson("POST", "/api/license", {{"ok", 1}});
    const QString installedOn = "Trial installed on " + server.url() + ": ";
    expectOutcome(box.run(kRequest), 0, installedOn + "T for '%1', 9 days (through later)\n");
    const QJsonObject reply = json("{'tier':'t','licensee':'l','days_left':0,'expires':''}");
    server.onJson("POST", "/api/license", reply);
    expectOutcome(box.run(kRequest), 0, installedOn + "t for 'l', 0 days (through )\n");
    EXPECT_EQ(box.run(kRequest + QStringList("--json")).json(), reply);
    const SeenRequest asked = service.requests().at(0);
    EXPECT_EQ(asked.header("Authorization"), "Bearer quorvelle-cli");
    EXPECT_EQ(asked.header("Content-Type"), "application/json");
    EXPECT_EQ(asked.body, "{\"name\":\"%1 & Söhne\"}");
    const SeenRequest installed = server.requests().at(0);
    EXPECT_EQ(installed.header("Authorization"), "Bearer t");
    EXPECT_EQ(object(QString::fromStdString(installed.body)), trial);

    box.environment.insert("QUORVELLE_TRIAL_TOKEN", "mine");
    server.onJson("POST", "/api/license", {{"error", "too old"}}, 409);
    expectError(box, kRequest, 2, "install trial failed (HTTP 409): too old");
    EXPECT_EQ(service.requests().back().header("Authorization"), "Bearer mine");
}

TEST_F(TrialLicense, IsNotInstalledWhenTheServiceGaveNone) {
    for (const QStringList& cells : rows(R"(
401 | {"error":"x"} | the licensing service rejected this client (bad or missing token)
429 | {"error":"x"} | rate limited by the licensing service - try again shortly
403 | {"error":"name taken: %1"} | name taken: %1
500 | <html> | licensing service returned HTTP 500
403 | {"error":""} | licensing service returned HTTP 403
200 | [{"tier":"t"}] | the licensing service sent no license
)")) {
        SCOPED_TRACE(cells.join(u'|').toStdString());
        service.on("POST", "/api/trial", [&](const httplib::Request&, httplib::Response& response) {
            response.status = cells[0].toInt();
            response.set_content(cells[1].toStdString(), "application/json");
        });
        expectError(box, kRequest, 2, cells[2]);
    }
    EXPECT_THAT(server.lines(), ElementsAre());
}

TEST_F(TrialLicense, NamesTheServiceThatGaveNoWholeAnswer) {
    const std::string cut = "HTTP/1.1 200 OK\r\nContent-Length: 99\r\n\r\n{\"tier\":\"t\"}";
    const RawServer cutting({cut, cut});
    for (const QString& url : {cutting.url(), QStringLiteral("http://127.0.0.1:1")}) {
        box.environment.insert("QUORVELLE_TRIAL_URL", url);
        expectError(box, kRequest, 2, "could not reach the licensing service at " + url);
    }
    EXPECT_THAT(server.lines(), ElementsAre());
}

}  // namespace
}  // namespace quorvelle::testing
