<?xml version="1.0"?>
<!-- Makes of native key chains, whose keys have all their leaves, the OpenConfig tree that `ocmap reverse` makes. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform"
                xmlns:kc="http://tarvex.example/ns/yang/Tarvex-lib-keychain-cfg"
                xmlns="http://openconfig.net/yang/macsec"
                exclude-result-prefixes="kc">
  <xsl:output method="xml" omit-xml-declaration="yes"/>

  <xsl:template match="/">
    <data xmlns="urn:ietf:params:xml:ns:netconf:base:1.0">
      <macsec xmlns="http://openconfig.net/yang/macsec">
        <mka>
          <key-chains>
            <xsl:apply-templates select="kc:keychains/kc:keychain"/>
          </key-chains>
        </mka>
      </macsec>
    </data>
  </xsl:template>

  <xsl:template match="kc:keychain">
    <key-chain>
      <name><xsl:value-of select="kc:chain-name"/></name>
      <config>
        <name><xsl:value-of select="kc:chain-name"/></name>
      </config>
      <mka-keys>
        <xsl:apply-templates select="kc:macsec-keychain/kc:macsec-keys/kc:macsec-key"/>
      </mka-keys>
    </key-chain>
  </xsl:template>

  <!-- The text of a key is not shown. -->
  <xsl:template match="kc:macsec-key">
    <mka-key>
      <id><xsl:value-of select="kc:key-id"/></id>
      <config>
        <id><xsl:value-of select="kc:key-id"/></id>
        <xsl:apply-templates select="kc:macsec-key-string/kc:cryptographic-algorithm"/>
        <xsl:apply-templates select="kc:macsec-lifetime"/>
      </config>
    </mka-key>
  </xsl:template>

  <xsl:template match="kc:cryptographic-algorithm">
    <cryptographic-algorithm>
      <xsl:choose>
        <xsl:when test=". = 'aes-128-cmac'">AES_128_CMAC</xsl:when>
        <xsl:when test=". = 'aes-256-cmac'">AES_256_CMAC</xsl:when>
        <xsl:otherwise><xsl:value-of select="."/></xsl:otherwise>
      </xsl:choose>
    </cryptographic-algorithm>
  </xsl:template>

  <!-- Of 'jul' the number is 101 + 18 div 3, of which the last two digits are wanted; so with all others. -->
  <xsl:template match="kc:macsec-lifetime">
    <valid-date-time>
      <xsl:value-of select="concat(kc:start-year, '-',
          substring(101 + string-length(substring-before('janfebmaraprmayjunjulaugsepoctnovdec', kc:start-month)) div 3, 2), '-',
          substring(100 + kc:start-date, 2), 'T', substring(100 + kc:start-hour, 2), ':',
          substring(100 + kc:start-minutes, 2), ':', substring(100 + kc:start-seconds, 2))"/>
    </valid-date-time>
    <expiration-date-time>
      <xsl:value-of select="concat(kc:end-year, '-',
          substring(101 + string-length(substring-before('janfebmaraprmayjunjulaugsepoctnovdec', kc:end-month)) div 3, 2), '-',
          substring(100 + kc:end-date, 2), 'T', substring(100 + kc:end-hour, 2), ':',
          substring(100 + kc:end-minutes, 2), ':', substring(100 + kc:end-seconds, 2))"/>
    </expiration-date-time>
  </xsl:template>
</xsl:stylesheet>
