<?xml version="1.0"?>
<!-- Makes of an edit of key chains, whose keys have all their leaves, the native tree that `ocmap forward` makes. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform"
                xmlns:nc="urn:ietf:params:xml:ns:netconf:base:1.0" xmlns:oc="http://openconfig.net/yang/macsec"
                xmlns="http://tarvex.example/ns/yang/Tarvex-lib-keychain-cfg"
                exclude-result-prefixes="nc oc">
  <xsl:output method="xml" omit-xml-declaration="yes"/>

  <xsl:template match="/">
    <config xmlns="urn:ietf:params:xml:ns:netconf:base:1.0">
      <keychains xmlns="http://tarvex.example/ns/yang/Tarvex-lib-keychain-cfg">
        <xsl:apply-templates select="nc:rpc/nc:edit-config/nc:config/oc:macsec/oc:mka/oc:key-chains/oc:key-chain"/>
      </keychains>
    </config>
  </xsl:template>

  <xsl:template match="oc:key-chain">
    <keychain>
      <chain-name><xsl:value-of select="oc:name"/></chain-name>
      <macsec-keychain>
        <macsec-keys>
          <xsl:apply-templates select="oc:mka-keys/oc:mka-key"/>
        </macsec-keys>
      </macsec-keychain>
    </keychain>
  </xsl:template>

  <xsl:template match="oc:mka-key">
    <macsec-key>
      <key-id><xsl:value-of select="oc:id"/></key-id>
      <xsl:apply-templates select="oc:config"/>
    </macsec-key>
  </xsl:template>

  <xsl:template match="oc:config">
    <macsec-key-string>
      <string>!<xsl:value-of select="oc:key-clear-text"/></string>
      <encryption-type>type7</encryption-type>
      <xsl:apply-templates select="oc:cryptographic-algorithm"/>
    </macsec-key-string>
    <macsec-lifetime>
      <xsl:apply-templates select="oc:valid-date-time"/>
      <xsl:apply-templates select="oc:expiration-date-time"/>
    </macsec-lifetime>
  </xsl:template>

  <xsl:template match="oc:cryptographic-algorithm">
    <cryptographic-algorithm>
      <xsl:choose>
        <xsl:when test=". = 'AES_128_CMAC'">aes-128-cmac</xsl:when>
        <xsl:when test=". = 'AES_256_CMAC'">aes-256-cmac</xsl:when>
        <xsl:otherwise><xsl:value-of select="."/></xsl:otherwise>
      </xsl:choose>
    </cryptographic-algorithm>
  </xsl:template>

  <!-- 2026-07-02T12:30:00; the native month has a name, and numbers have no leading zero. -->
  <xsl:template match="oc:valid-date-time">
    <start-year><xsl:value-of select="substring(., 1, 4)"/></start-year>
    <start-month><xsl:value-of select="substring('janfebmaraprmayjunjulaugsepoctnovdec', substring(., 6, 2) * 3 - 2, 3)"/></start-month>
    <start-date><xsl:value-of select="number(substring(., 9, 2))"/></start-date>
    <start-hour><xsl:value-of select="number(substring(., 12, 2))"/></start-hour>
    <start-minutes><xsl:value-of select="number(substring(., 15, 2))"/></start-minutes>
    <start-seconds><xsl:value-of select="number(substring(., 18, 2))"/></start-seconds>
  </xsl:template>

  <xsl:template match="oc:expiration-date-time">
    <end-year><xsl:value-of select="substring(., 1, 4)"/></end-year>
    <end-month><xsl:value-of select="substring('janfebmaraprmayjunjulaugsepoctnovdec', substring(., 6, 2) * 3 - 2, 3)"/></end-month>
    <end-date><xsl:value-of select="number(substring(., 9, 2))"/></end-date>
    <end-hour><xsl:value-of select="number(substring(., 12, 2))"/></end-hour>
    <end-minutes><xsl:value-of select="number(substring(., 15, 2))"/></end-minutes>
    <end-seconds><xsl:value-of select="number(substring(., 18, 2))"/></end-seconds>
  </xsl:template>
</xsl:stylesheet>
