#include "ServerCatalogue.h"

using namespace Qt::StringLiterals;

namespace ServerCatalogue {

QStringList addresses()
{
    return {
            u"irc.libera.chat:6667"_s,      u"irc.oftc.net:6667"_s,
            u"irc.efnet.org:6667"_s,        u"irc.undernet.org:6667"_s,
            u"us.undernet.org:7000"_s,      u"eu.undernet.org:6660"_s,
            u"irc.quakenet.org:6667"_s,     u"open.ircnet.net:6667"_s,
            u"irc.dal.net:6667"_s,          u"irc.rizon.net:6667"_s,
            u"chat.freenode.net:6667"_s,    u"irc.snoonet.org:6667"_s,
            u"irc.gamesurge.net:6667"_s,    u"irc.esper.net:6667"_s,
            u"irc.chat.twitch.tv:6667"_s,   u"irc.tilde.chat:6667"_s,
            u"irc.geekshed.net:6667"_s,     u"irc.swiftirc.net:6667"_s,
            u"irc.abjects.net:6667"_s,      u"irc.afternet.org:6667"_s,
            u"irc.anonops.com:6667"_s,      u"irc.austnet.org:6667"_s,
            u"irc.autistici.org:6667"_s,    u"irc.azzurra.chat:6667"_s,
            u"irc.chat4all.org:6667"_s,     u"irc.chathispano.com:6667"_s,
            u"irc.chatjunkies.org:6667"_s,  u"irc.chatspike.net:6667"_s,
            u"irc.coldfront.net:6667"_s,    u"irc.criten.net:6667"_s,
            u"irc.dalnet.ru:6667"_s,        u"irc.darkmyst.org:6667"_s,
            u"irc.data.lt:6667"_s,          u"irc.digitalirc.org:6667"_s,
            u"irc.epiknet.org:6667"_s,      u"irc.euirc.net:6667"_s,
            u"irc.europnet.org:6667"_s,     u"irc.fdfnet.net:6667"_s,
            u"irc.furnet.org:6667"_s,       u"irc.geeknode.org:6667"_s,
            u"irc.globalgamers.net:6667"_s, u"irc.iiens.net:6667"_s,
            u"irc.indymedia.org:6667"_s,    u"irc.interlinked.me:6667"_s,
            u"irc.irc4fun.net:6667"_s,      u"irc.irc-hispano.org:6667"_s,
            u"irc.irchighway.net:6667"_s,   u"irc.ircnow.org:6667"_s,
            u"irc.mibbit.net:6667"_s,       u"irc.mixxnet.net:6667"_s,
            u"irc.newnet.net:6667"_s,       u"irc.nightstar.net:6667"_s,
            u"irc.p2p-network.net:6667"_s,  u"irc.pirc.pl:6667"_s,
            u"irc.ptnet.org:6667"_s,        u"irc.rezosup.org:6667"_s,
            u"irc.rusnet.org.ru:6667"_s,    u"irc.scarynet.org:6667"_s,
            u"irc.scoutlink.net:6667"_s,    u"irc.serenity-irc.net:6667"_s,
            u"irc.simosnap.com:6667"_s,     u"irc.skychatz.org:6667"_s,
            u"irc.slashnet.org:6667"_s,     u"irc.sorcery.net:6667"_s,
            u"irc.spotchat.org:6667"_s,     u"irc.starlink-irc.org:6667"_s,
            u"irc.synirc.net:6667"_s,       u"irc.tweakers.net:6667"_s,
            u"irc.w3.org:6667"_s,           u"irc.wenet.ru:6667"_s,
            u"irc.wyldryde.org:6667"_s,     u"irc.2600.net:6667"_s,
    };
}

QString preferredAddress()
{
    return u"irc.libera.chat:6667"_s;
}

} // namespace ServerCatalogue
