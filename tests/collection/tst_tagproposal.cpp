// What a song's tags would become by what somebody else knows of it.
#include "collection/tagproposal.h"

#include <QtTest>

using Fill = TagProposal::Fill;

namespace {
TagTexts tags(const QMap<QString, QString>& texts,
              const std::optional<QByteArray>& picture = std::optional<QByteArray>())
{
    TagTexts tags;
    tags.texts = texts;
    tags.picture = picture;
    return tags;
}

const TagTexts& known()
{
    static const TagTexts all =
        tags({{"track", "4"}, {"title", "Midnight Ferry"}, {"album", "Paper Lanterns"}}, QByteArray("new"));
    return all;
}

QStringList linesOf(const TagProposal& proposal)
{
    QStringList lines;
    for (const TagProposal::Field& field : proposal.fields())
        lines.append(field.name + ": " + field.before + " > " + field.after);
    return lines;
}
} // namespace

class TestTagProposal : public QObject
{
    Q_OBJECT

private slots:
    void whatIsKnownAndNotSoAlreadyIsProposed();
    void onlyWhatIsMissingIsFilled();
    void nothingKnownIsNothingProposed();
    void itFitsWhatItWasMadeForAndWhatItMakes();
};

void TestTagProposal::whatIsKnownAndNotSoAlreadyIsProposed()
{
    const TagProposal proposal(
        tags({{"title", "Midnight Fery"}, {"album", "Paper Lanterns"}, {"genre", "Pop"}}, QByteArray("old!")),
        known(), Fill::All);
    QCOMPARE(linesOf(proposal), QStringList({"title: Midnight Fery > Midnight Ferry", "track:  > 4"}));
    QVERIFY(proposal.cover().changes);
    QCOMPARE(proposal.cover().bytesBefore, 4);
    QCOMPARE(proposal.cover().bytesAfter, 3);
    const TagTexts change = proposal.change();
    QCOMPARE(change.texts, (QMap<QString, QString>{{"title", "Midnight Ferry"}, {"track", "4"}}));
    QCOMPARE(*change.picture, QByteArray("new"));
}

void TestTagProposal::onlyWhatIsMissingIsFilled()
{
    const TagProposal proposal(tags({{"title", "Midnight Fery"}, {"album", ""}}, QByteArray("old")), known(),
                               Fill::OnlyMissing);
    QCOMPARE(linesOf(proposal), QStringList({"album:  > Paper Lanterns", "track:  > 4"}));
    QVERIFY(!proposal.cover().changes && !proposal.change().picture);
    const TagProposal bare(tags({}), known(), Fill::OnlyMissing);
    QCOMPARE(bare.fields().size(), 3);
    QVERIFY(bare.cover().changes);
}

void TestTagProposal::nothingKnownIsNothingProposed()
{
    const TagTexts held = tags({{"title", "Halo"}}, QByteArray("old"));
    for (const TagTexts& nothing : {TagTexts(), tags({{"title", ""}}, QByteArray()), held}) {
        const TagProposal proposal(held, nothing, Fill::All);
        QVERIFY(proposal.isEmpty() && proposal.change().isEmpty());
        QVERIFY(proposal.fits(tags({{"title", "Another"}})));
    }
}

void TestTagProposal::itFitsWhatItWasMadeForAndWhatItMakes()
{
    const TagTexts held = tags({{"title", "Midnight Fery"}, {"album", "Paper Lanterns"}}, QByteArray("old"));
    const TagProposal proposal(held, known(), Fill::All);
    QVERIFY(proposal.fits(held));
    QVERIFY(proposal.fits(known()));
    TagTexts other = held;
    other.texts["album"] = "Other"; // which it leaves alone
    QVERIFY(proposal.fits(other));
    other.texts["title"] = "Other";
    QVERIFY(!proposal.fits(other));
    other = held;
    other.picture = "other";
    QVERIFY(!proposal.fits(other));
}

QTEST_GUILESS_MAIN(TestTagProposal)
#include "tst_tagproposal.moc"
